// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/ChangeText.h"

#include "tallbook/BasicAccount.h"
#include "tallbook/DataclassNames.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/ChangeWords.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

std::string nameOf(const DictionaryRef& record) {
  const auto account = BasicAccount::initWithProperties(record);
  return shortened(account ? account->nameForPeople() : "");
}

std::string valueText(const Value& value) {
  return shortened(lineText(value));
}

std::string textOf(const ChangedKey& change) {
  const std::vector<std::string> words = wordsFor(change);
  std::string text;
  for (const std::string& each : words) text += (text.empty() ? "" : "; ") + each;
  // Words for other keys begin with the key.
  if (!text.starts_with(std::string_view(change.key))) return text;
  text = shortened(text);
  if (!change.before) return text + ": " + valueText(*change.now);
  if (!change.now) return text + ": " + valueText(*change.before);
  return shortened(change.key) + " " + valueText(*change.before) + " -> " + valueText(*change.now);
}

std::string textOfChanged(const ChangedAccount& change) {
  std::string text;
  for (const ChangedKey& key : change.keys) text += (text.empty() ? "" : "; ") + textOf(key);
  return text;
}

/// "added, Exchange E1; Mail, Calendars on".
std::string textOfWhole(const ChangedAccount& change) {
  std::string text = std::string(nameOf(styleOf(change))) + ", " + change.type.str() + " " +
                     (change.identifier ? shortened(change.identifier) : "without identifier");
  if (!change.before && !change.dataclassesNow.empty()) {
    text += "; " + shortNamesOfDataclasses(change.dataclassesNow) + " on";
  }
  return text;
}

}  // namespace

std::string_view nameOf(Style style) {
  return style == Style::Added ? "added" : style == Style::Removed ? "removed" : "changed";
}

JSON jsonFrom(const std::vector<ChangedKey>& keys) {
  JSON object = JSON::object();
  for (const ChangedKey& key : keys) {
    JSON& sides = object[key.key.str()];
    if (key.before) sides["before"] = jsonFromValue(*key.before);
    if (key.now) sides["after"] = jsonFromValue(*key.now);
  }
  return object;
}

std::string textOf(const ChangedAccount& change) {
  const std::string above = change.parent ? nameOf(change.parent) + " > " : "";
  return above + nameOf(change.before ? change.before : change.now) + ": " +
         (change.before && change.now ? textOfChanged(change) : textOfWhole(change));
}

JSON jsonFrom(const ChangedAccount& change) {
  JSON object{{"change", nameOf(styleOf(change))},
              {"identifier", jsonFromValue(change.identifier)}};
  if (change.parent) object["parent"] = jsonFromValue(change.parent[kAccountIdentifier]);
  object["type"] = change.type.str();
  object["name"] = nameOf(change.before ? change.before : change.now);
  object["dataclasses"] = {{"before", jsonFromValue(change.dataclassesBefore)},
                           {"after", jsonFromValue(change.dataclassesNow)}};
  object["keys"] = jsonFrom(change.keys);
  return object;
}

}  // namespace tallbook::tool
