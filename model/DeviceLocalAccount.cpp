// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/DeviceLocalAccount.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tallbook/PlugInClass.h"
#include "tallbook/Vocabulary.h"

#include "model/UpperCase.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

[[maybe_unused]] const PlugInRegistration registration(kPlugInInterfaceVersion, [] {
  PlugInClass deviceLocalAccount;
  deviceLocalAccount.name = "DeviceLocalAccount";
  deviceLocalAccount.initWithProperties = &DeviceLocalAccount::initWithProperties;
  deviceLocalAccount.accountWithBasicAccount = &DeviceLocalAccount::accountWithBasicAccount;
  return deviceLocalAccount;
});

constexpr const char* kIdentifier = "DeviceLocalAccount";
constexpr std::string_view kStringTable = "DeviceLocalAccount";

// Sources of synced data, as the pairing service names them.
constexpr const char* kParlaneSource = "Quarro";
constexpr const char* kPCSource = "Windows";
/// The device itself: no computer. Also stands in for an unknown class of device.
constexpr const char* kHandraSource = "Handra";

String localized(const std::string& key, std::string_view fallback = "") {
  return Platform::current().resourceBundle().localizedString(key, kStringTable, fallback);
}

/// The text of the key that names this kind of device, such as "<prefix>_MEDIA_PLAYER". A kind that
/// the table does not know is called what an unknown one is called.
String deviceTypeText(const std::string& prefix) {
  const Value answer = Platform::current().deviceInformation().answerForKey("DeviceClass");
  const auto keyOf = [&](std::string_view deviceClass) {
    std::string key = prefix + "_" + upperCase(deviceClass);
    std::ranges::replace(key, ' ', '_');
    return key;
  };
  const String fallback = localized(keyOf(kHandraSource));
  return localized(keyOf(answer.stringView().value_or(kHandraSource)), fallback);
}

/// Where the pairing service files what it knows of a dataclass; empty for one that no computer
/// syncs.
std::string_view pairingKeyForDataclass(std::string_view dataclass) {
  static const std::array<std::pair<const String&, std::string_view>, 6> keys{{
      {kAccountDataclassMail, "Mail Accounts"},
      {kAccountDataclassContacts, "Contacts"},
      {kAccountDataclassCalendars, "Calendars"},
      {kAccountDataclassReminders, "Calendars"},
      {kAccountDataclassBookmarks, "Bookmarks"},
      {kAccountDataclassNotes, "Notes"},
  }};
  for (const auto& [known, key] : keys) {
    if (known == dataclass) return key;
  }
  return {};
}

}  // namespace

String DeviceLocalAccount::_identifier() {
  initialize();
  return kIdentifier;
}

DictionaryRef DeviceLocalAccount::basicAccountProperties(const String& className) {
  const String text = typeString();
  return Dictionary::make({{kAccountType, kOnMyDeviceAccountType},
                           {kAccountClass, className},
                           {kAccountTypeString, text},
                           {kAccountShortTypeString, text},
                           {kAccountIdentifier, _identifier()}});
}

String DeviceLocalAccount::typeString() {
  initialize();
  return deviceTypeText("ON_MY_DEVICE_TYPE");
}

String DeviceLocalAccount::tetheredSourceForDataClass(std::string_view dataclass) {
  initialize();
  const Value recorded = Platform::current().pairingRecords().valueForKey(
      pairingKeyForDataclass(dataclass), "com.orvane.mobile.tethered_sync");
  const DictionaryRef source = recorded.dictionary();
  const String system = source ? (*source)["SyncingOS"].string() : nullptr;
  return system ? system : kHandraSource;
}

bool DeviceLocalAccount::isTetheredSyncingDataclass(std::string_view dataclass) {
  const String source = tetheredSourceForDataClass(dataclass);
  return source == kParlaneSource || source == kPCSource;
}

String DeviceLocalAccount::localizedSyncSourceStringForDataClassForBeginningOfSentence(
    std::string_view dataclass, bool forBeginningOfSentence) {
  const String source = tetheredSourceForDataClass(dataclass);
  const std::string place = forBeginningOfSentence ? "" : "_MID_SENTENCE";
  if (source == kParlaneSource) return localized("FROM_MY_COMPUTER_TYPE_PARLANE" + place);
  if (source == kPCSource) return localized("FROM_MY_COMPUTER_TYPE_PC" + place);
  return deviceTypeText("ON_MY_DEVICE_TYPE" + place);
}

String DeviceLocalAccount::localizedReferenceToSyncSourceStringForDataClass(
    std::string_view dataclass) {
  const String source = tetheredSourceForDataClass(dataclass);
  if (source == kParlaneSource) {
    return localized("SYNCED_WITH_YOUR_COMPUTER_TYPE_PARLANE_MID_SENTENCE");
  }
  if (source == kPCSource) return localized("SYNCED_WITH_YOUR_COMPUTER_TYPE_PC_MID_SENTENCE");
  return deviceTypeText("ON_YOUR_DEVICE_TYPE_MID_SENTENCE");
}

std::shared_ptr<BasicAccount> DeviceLocalAccount::accountWithBasicAccount(
    const std::shared_ptr<BasicAccount>& account) {
  initialize();
  return account ? initWithProperties(account->properties()) : nullptr;
}

std::shared_ptr<DeviceLocalAccount> DeviceLocalAccount::accountWithTypeClass(
    const String& type, const String& className) {
  return initWithProperties(propertiesWithTypeClass(type, className));
}

std::shared_ptr<DeviceLocalAccount> DeviceLocalAccount::_initWithTypeClass(
    const String& type, const String& className) {
  return accountWithTypeClass(type, className);
}

std::shared_ptr<DeviceLocalAccount> DeviceLocalAccount::accountWithProperties(
    const DictionaryRef& properties) {
  return initWithProperties(properties);
}

std::shared_ptr<DeviceLocalAccount> DeviceLocalAccount::initWithProperties(
    const DictionaryRef& properties) {
  auto making = prepare(properties);
  return making ? std::make_shared<DeviceLocalAccount>(std::move(*making)) : nullptr;
}

String DeviceLocalAccount::identifier() const {
  return _identifier();
}

String DeviceLocalAccount::syncStoreIdentifier() const {
  return identifier();
}

String DeviceLocalAccount::displayName() const {
  return typeString();
}

}  // namespace tallbook
