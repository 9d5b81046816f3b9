// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/FileDifferences.h"

#include <iostream>

#include "tallbook/Vocabulary.h"

#include "tools/tallbook/ChangeText.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

/// What became of the file's top level or of one record.
struct Row {
  Style style;
  std::string label;
  std::vector<ChangedKey> keys;
};

std::string labelOf(const DictionaryRef& record) {
  const String type = record[kAccountType].string();
  const String identifier = record[kAccountIdentifier].string();
  const String name = record[kAccountDisplayName].string();
  std::string label = type.empty() ? "record" : shortened(type);
  label += identifier.empty() ? " without identifier" : " " + shortened(identifier);
  return name.empty() ? label : label + " \"" + shortened(name) + "\"";
}

std::vector<Row> rowsOf(const AccountsFileDifferences& differences) {
  std::vector<Row> rows;
  rows.reserve(differences.accounts.size() + 2);
  if (!differences.keys.empty()) rows.push_back({Style::Changed, "file", differences.keys});
  for (const ChangedAccount& change : differences.accounts) {
    const std::string above = change.parent ? labelOf(change.parent) + " > " : "";
    rows.push_back(
        {styleOf(change), above + labelOf(change.now ? change.now : change.before), change.keys});
  }
  if (differences.isReordered) rows.push_back({Style::Changed, "order of the records", {}});
  return rows;
}

std::string signOf(Style style) {
  return style == Style::Added ? "+ " : style == Style::Removed ? "- " : "~ ";
}

}  // namespace

void printDifferences(const AccountsFileDifferences& differences, bool asJSON) {
  if (asJSON) return printJSON(jsonFromDifferences(differences));
  for (const auto& [style, label, keys] : rowsOf(differences)) {
    std::cout << styled(style, signOf(style) + printable(label)) << '\n';
    for (const ChangedKey& change : keys) {
      const Style ofKey = styleOf(change);
      std::string line = "    " + signOf(ofKey) + printable(change.key) + ": ";
      if (change.before) line += lineText(*change.before);
      if (ofKey == Style::Changed) line += " -> ";
      if (change.now) line += lineText(*change.now);
      std::cout << styled(ofKey, line) << '\n';
    }
  }
}

JSON jsonFromDifferences(const AccountsFileDifferences& differences) {
  JSON array = JSON::array();
  for (const auto& [style, label, keys] : rowsOf(differences)) {
    array.push_back({{"change", nameOf(style)}, {"record", label}, {"keys", jsonFrom(keys)}});
  }
  return array;
}

std::string summaryOfDifferences(const AccountsFileDifferences& differences) {
  std::string summary;
  for (const auto& [style, label, keys] : rowsOf(differences)) {
    summary += (summary.empty() ? "" : "; ") + signOf(style) + label;
    if (style != Style::Changed) continue;
    const char* separator = ": ";
    for (const ChangedKey& change : keys) {
      summary += separator + shortened(change.key);
      separator = ", ";
    }
  }
  return summary.empty() ? "nothing" : summary;
}

}  // namespace tallbook::tool
