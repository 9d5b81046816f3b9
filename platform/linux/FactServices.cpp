// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/FactServices.h"

#include <cstdint>
#include <limits>
#include <sys/utsname.h>

#include "platform/linux/FactFile.h"

namespace tallbook {
namespace {

constexpr const char* kFallbackDisplayString = "Nimbrel";

std::string pathOfFacts(const DeviceRoot& root, const char* name) {
  return root.path() + "/etc/tallbook/" + name;
}

Value entryOf(const DictionaryRef& dictionary, std::string_view key) {
  return dictionary ? (*dictionary)[key] : Value();
}

/// The integer; 0 for every other kind and for one that an int does not hold.
int intOf(const Value& value) {
  if (value.kind() != Value::Kind::Integer || value.isBeyondSigned()) return 0;
  const std::int64_t number = value.integerValue();
  const bool fits =
      number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
  return fits ? static_cast<int>(number) : 0;
}

// The kernel adds the byte order to the architecture's name: "armv6l", "armv7b".
std::string processorArchitecture() {
  utsname system{};
  ::uname(&system);
  std::string machine = system.machine;
  const bool namesByteOrder = machine.starts_with("armv") && machine.size() > 5;
  if (namesByteOrder && (machine.back() == 'l' || machine.back() == 'b')) machine.pop_back();
  return machine;
}

std::string_view nameOf(ManagementRestrictions::Feature feature) {
  using Feature = ManagementRestrictions::Feature;
  switch (feature) {
    case Feature::CloudDocumentSync:
      return "CloudDocumentSync";
    case Feature::PhotoStream:
      return "PhotoStream";
    case Feature::SharedPhotoStreams:
      return "SharedPhotoStreams";
    case Feature::CloudBackup:
      return "CloudBackup";
    case Feature::PassesWhileLocked:
      return "PassesWhileLocked";
  }
  return {};
}

std::string_view nameOf(ExternalSyncSources::DataType type) {
  using DataType = ExternalSyncSources::DataType;
  switch (type) {
    case DataType::Bookmarks:
      return "Bookmarks";
    case DataType::Calendars:
      return "Calendars";
    case DataType::Contacts:
      return "Contacts";
    case DataType::Notes:
      return "Notes";
  }
  return {};
}

}  // namespace

LinuxDeviceInformation::LinuxDeviceInformation(const DeviceRoot& root)
    : _root(root), _path(pathOfFacts(root, "DeviceInformation.plist")) {}

Value LinuxDeviceInformation::answerForKey(std::string_view key) const {
  const Value answer = entryOf(dictionaryInFile(_root, _path), key);
  if (key == "CPUArchitecture" && !answer.stringView()) return processorArchitecture();
  return answer;
}

LinuxRestrictions::LinuxRestrictions(const DeviceRoot& root)
    : _root(root), _path(pathOfFacts(root, "Restrictions.plist")) {}

std::vector<int> LinuxRestrictions::restrictionsOfFeatures(
    const std::vector<Feature>& features) const {
  const DictionaryRef facts = dictionaryInFile(_root, _path);
  std::vector<int> restrictions;
  restrictions.reserve(features.size());
  for (const Feature feature : features) {
    restrictions.push_back(intOf(entryOf(facts, nameOf(feature))));
  }
  return restrictions;
}

LinuxPairingRecords::LinuxPairingRecords(const DeviceRoot& root)
    : _root(root), _path(pathOfFacts(root, "PairingRecords.plist")) {}

Value LinuxPairingRecords::valueForKey(std::string_view key, std::string_view domain) const {
  const DictionaryRef records = entryOf(dictionaryInFile(_root, _path), domain).dictionary();
  return key.empty() ? Value(records) : entryOf(records, key);
}

LinuxSyncSources::LinuxSyncSources(const DeviceRoot& root)
    : _root(root), _path(pathOfFacts(root, "SyncSources.plist")) {}

ExternalSyncSources::Answer LinuxSyncSources::enabledSourcesForDataType(DataType type) const {
  Answer answer;
  const DictionaryRef file = dictionaryInFile(_root, _path, &answer.error);
  const Value* entry = file ? file->find(nameOf(type)) : nullptr;
  if (!entry) return answer;
  const ArrayRef names = entry->array();
  if (!names) {
    answer.error = _path + ": " + std::string(nameOf(type)) + " is not an array";
    return answer;
  }
  for (const Value& name : *names) {
    if (name.stringView()) answer.sources.push_back(name.string());
  }
  return answer;
}

LinuxHostedService::LinuxHostedService(const DeviceRoot& root)
    : _root(root), _path(pathOfFacts(root, "HostedService.plist")) {}

std::string LinuxHostedService::accountTypeDisplayString() const {
  const String text = entryOf(dictionaryInFile(_root, _path), "AccountTypeDisplayString").string();
  return text ? text.str() : kFallbackDisplayString;
}

}  // namespace tallbook
