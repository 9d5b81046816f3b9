#include "tallbook/Vocabulary.h"

#include "tools/common/FileBytes.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/RecordKeys.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

/// How a text is taken that is to be of a kind.
std::string spellingOf(Value::Kind kind) {
  switch (kind) {
    case Value::Kind::Null:
      return "string";
    case Value::Kind::Array:
    case Value::Kind::Dictionary:
      return "json";
    default:
      return std::string(nameOfKind(kind));
  }
}

/// Without the end of its last line, which whoever wrote it hardly means.
std::string textOfStandardInput() {
  std::error_code error;
  std::string text = bytesOfStandardInput(error);
  if (error) {
    throw Failure(ExitCode::Unreadable, "standard input cannot be read: " + error.message());
  }
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

ExitCode set(const Options& options, const Assignment& assignment) {
  const std::string& key = assignment.key;
  if (key.empty()) throw Failure(ExitCode::Usage, "a key is not empty; name the one to change");
  requireChangeable(key);
  requireUnicode(key);
  const std::string text = assignment.text == "-" ? textOfStandardInput() : assignment.text;
  const EditableStore store(options);
  const auto record = recordNamed(*store, assignment.identifier);
  if (!assignment.mayBeNew) requireNoOtherCapitals(key, *record->properties());
  const Value present = (*record->properties())[key];
  const Value::Kind usual = present.isNull() ? kindOfKey(key) : present.kind();
  const bool isGuessed = assignment.kind.empty() && usual == Value::Kind::Null;
  const Value value =
      valueFromText(text, assignment.kind.empty() ? spellingOf(usual) : assignment.kind);
  // JSON spells every kind.
  if (assignment.kind.empty() && !isGuessed && value.kind() != usual) {
    throw Failure(ExitCode::Usage, "the value for \"" + key + "\" " +
                                       textOfWrongKind(value, nameOfKind(usual)) +
                                       "; if it is meant, repeat the command with --type json");
  }
  if (value == present) return ExitCode::Done;
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
  const std::string looks(kindThatTextLooksLike(text));
  if (isGuessed && looks != "string") {
    note("\"" + key + "\" is new and stored as a string; if it is meant as the " + looks +
         " that it looks like, repeat the command with --type " + looks);
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
