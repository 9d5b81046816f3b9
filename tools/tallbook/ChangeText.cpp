#include "tools/tallbook/ChangeText.h"

#include "tallbook/BasicAccount.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Dataclasses.h"
#include "tools/common/RecordChanges.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

using Kind = ChangedAccount::Kind;

std::string nameOf(const DictionaryRef& record) {
  const auto account = BasicAccount::initWithProperties(record);
  return shortened(account ? tool::nameOf(*account) : "");
}

std::string_view nameOf(Kind kind) {
  return kind == Kind::Added ? "added" : kind == Kind::Removed ? "removed" : "changed";
}

std::string valueText(const Value& value) {
  return shortened(lineText(value));
}

std::string textOf(const KeyChange& change) {
  if (change.dataclass) return wordsFor(change);
  if (change.kind == KeyChange::Kind::Changed) {
    return shortened(change.key) + " " + valueText(change.before) + " -> " +
           valueText(change.after);
  }
  const bool isAdded = change.kind == KeyChange::Kind::Added;
  return shortened(wordsFor(change)) + ": " + valueText(isAdded ? change.after : change.before);
}

std::string textOfChanged(const ChangedAccount& change) {
  std::string text;
  for (const KeyChange& key : changesBetween(*change.before, *change.now)) {
    text += (text.empty() ? "" : "; ") + textOf(key);
  }
  return text.empty() ? kAccountChildAccounts.str() + " changed" : text;
}

/// "added, Exchange E1; Mail, Calendars on".
std::string textOfWhole(const ChangedAccount& change) {
  std::string text = std::string(nameOf(change.kind)) + ", " + change.type.str() + " " +
                     (change.identifier ? shortened(change.identifier) : "without identifier");
  const bool isAdded = change.kind == Kind::Added;
  if (isAdded && !change.dataclassesNow.empty()) {
    text += "; " + shortNames(change.dataclassesNow) + " on";
  }
  return text;
}

JSON listFrom(const ArrayRef& dataclasses) {
  return dataclasses ? jsonFromValue(dataclasses) : JSON();
}

}  // namespace

std::string textOf(const ChangedAccount& change) {
  const std::string above = change.parent ? nameOf(change.parent) + " > " : "";
  const bool isChanged = change.kind == Kind::Changed;
  return above + nameOf(change.before ? change.before : change.now) + ": " +
         (isChanged ? textOfChanged(change) : textOfWhole(change));
}

JSON jsonFrom(const ChangedAccount& change) {
  JSON object = JSON::object();
  object["change"] = nameOf(change.kind);
  object["identifier"] = jsonFromValue(change.identifier);
  if (change.parent) object["parent"] = jsonFromValue(change.parent[kAccountIdentifier]);
  object["type"] = change.type.str();
  object["name"] = nameOf(change.before ? change.before : change.now);
  object["dataclasses"] = {{"before", listFrom(change.dataclassesBefore)},
                           {"after", listFrom(change.dataclassesNow)}};
  object["keys"] = JSON::object();
  for (const ChangedKey& key : change.keys) {
    JSON sides = JSON::object();
    if (key.before) sides["before"] = jsonFromValue(*key.before);
    if (key.now) sides["after"] = jsonFromValue(*key.now);
    object["keys"][key.key.str()] = std::move(sides);
  }
  return object;
}

}  // namespace tallbook::tool
