// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/ScriptedServices.h"

#include <algorithm>
#include <filesystem>

#include "tests/support/Files.h"
#include "tests/support/ShippedResources.h"

namespace tallbook {
namespace {

bool anyContains(const std::vector<std::string>& lines, std::string_view text) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

template <class Map, class Key>
typename Map::mapped_type found(const Map& map, const Key& key) {
  const auto at = map.find(key);
  return at == map.end() ? typename Map::mapped_type() : at->second;
}

}  // namespace

void CapturedSystemLog::write(std::string_view, std::string_view, std::string_view line) {
  lines.emplace_back(line);
}

bool CapturedSystemLog::contains(std::string_view text) const {
  return anyContains(lines, text);
}

bool CapturedConsoleLog::contains(std::string_view text) const {
  return anyContains(lines, text);
}

Value ScriptedDeviceInformation::answerForKey(std::string_view key) const {
  return found(answers, key);
}

std::vector<int> ScriptedRestrictions::restrictionsOfFeatures(
    const std::vector<Feature>& features) const {
  std::vector<int> restrictions;
  for (const Feature feature : features) {
    asked.push_back(feature);
    restrictions.push_back(found(answers, feature));
  }
  return restrictions;
}

Value ScriptedPairingRecords::valueForKey(std::string_view key, std::string_view domain) const {
  const DictionaryRef records = found(domains, domain);
  if (!records || key.empty()) return records;
  return (*records)[key];
}

ExternalSyncSources::Answer ScriptedSyncSources::enabledSourcesForDataType(DataType type) const {
  return found(answers, type);
}

ScriptedResources::ScriptedResources(std::string overriding)
    : _overriding(std::move(overriding)), _bundle(_root, {_overriding, shippedResources()}) {}

void ScriptedResources::replace(const std::string& name, const Value& content) {
  test::writePropertyList(_overriding + "/" + name + ".plist", content);
}

void ScriptedResources::replaceBytes(const std::string& name, std::string_view bytes) {
  test::writeFile(_overriding + "/" + name + ".plist", bytes);
}

void ScriptedResources::replaceStrings(const std::string& table, const std::string& language,
                                       const Value& texts) {
  test::writePropertyList(_overriding + "/" + language + "/" + table + ".strings", texts);
}

std::optional<std::string> ScriptedResources::pathForResource(std::string_view name,
                                                              std::string_view type) const {
  if (_missing.contains(name)) return std::nullopt;
  return _bundle.pathForResource(name, type);
}

std::vector<std::string> ScriptedResources::pathsForResource(std::string_view name,
                                                             std::string_view type) const {
  if (_missing.contains(name)) return {};
  return _bundle.pathsForResource(name, type);
}

}  // namespace tallbook
