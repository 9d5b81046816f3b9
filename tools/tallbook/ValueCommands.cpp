#include <iostream>

#include "tallbook/Vocabulary.h"

#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

/// The kind that a text is taken as when the user names none: that of the value it replaces.
std::string kindToKeep(const Value& present) {
  switch (present.kind()) {
    case Value::Kind::Null:
      return "string";
    case Value::Kind::Array:
    case Value::Kind::Dictionary:
      return "json";
    default:
      return std::string(nameOfKind(present.kind()));
  }
}

void requireChangeable(const std::string& key) {
  if (key == kAccountType.view() || key == kAccountIdentifier.view()) {
    throw Failure(ExitCode::Usage, "\"" + key +
                                       "\" is what makes the record this one and cannot be "
                                       "changed; add another account and remove this one");
  }
}

}  // namespace

ExitCode get(const Options& options, const std::string& identifier, const std::string& key,
             const std::optional<std::string>& otherwise) {
  const auto store = storeToRead();
  const auto record = recordNamed(*store, identifier);
  Value value = record->accountPropertyForKey(key);
  if (value.isNull() && otherwise) value = *otherwise;
  if (value.isNull()) {
    throw Failure(ExitCode::NotFound, "the account has no \"" + key + "\"; \"tallbook show " +
                                          identifier + "\" prints the keys it has");
  }
  if (options.json) {
    printJSON(jsonFromValue(value));
  } else {
    std::cout << shown(plainText(value)) << '\n';
  }
  return ExitCode::Done;
}

ExitCode set(const Options& options, const std::string& identifier, const std::string& key,
             const std::string& text, const std::string& kind) {
  requireChangeable(key);
  requireUnicode(key);
  const EditableStore store(options);
  const auto record = recordNamed(*store, identifier);
  const Value value =
      valueFromText(text, kind.empty() ? kindToKeep((*record->properties())[key]) : kind);
  if (key == kAccountClass.view()) {
    if (value.string().empty()) {
      throw Failure(ExitCode::Usage, "\"Class\" is a string that is not empty");
    }
    record->setAccountClass(value.string());
    if (!record->parentAccount()) requireLoadable(record->properties());
  } else {
    record->setAccountPropertyForKey(value, key);
  }
  store.take(record);
  store.save();
  return ExitCode::Done;
}

ExitCode unset(const Options& options, const std::string& identifier, const std::string& key) {
  requireChangeable(key);
  if (key == kAccountClass.view()) {
    throw Failure(ExitCode::Usage,
                  "an account without \"Class\" is dropped at the next load; set "
                  "it to another class instead");
  }
  const EditableStore store(options);
  const auto record = recordNamed(*store, identifier);
  if (!record->properties()->contains(key)) {
    throw Failure(ExitCode::NotFound, "the account has no \"" + key + "\" of its own");
  }
  record->removeAccountPropertyForKey(key);
  store.take(record);
  store.save();
  return ExitCode::Done;
}

}  // namespace tallbook::tool
