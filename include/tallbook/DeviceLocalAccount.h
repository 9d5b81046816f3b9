// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tallbook/BasicAccount.h"

namespace tallbook {

/// The single account of the data that the user keeps on the device itself, or that a computer
/// syncs to it over the cable. Its identifier is fixed and its name follows the kind of device.
/// What the device does not tell falls back to "no computer", and a kind of device without texts of
/// its own to that of an unknown kind. Throws only as the first use of `BasicAccount` does. Class
/// operations are thread-safe; a record is thread-bound.
class TALLBOOK_EXPORT DeviceLocalAccount : public BasicAccount {
 public:
  using BasicAccount::BasicAccount;

  /// The identifier of every record of this class: "DeviceLocalAccount".
  static String _identifier();
  /// The properties of a new device-local record, its "Class" being the class that is asked.
  static DictionaryRef basicAccountProperties(const String& className = "DeviceLocalAccount");
  /// What the account is called on this kind of device, in the user's language.
  static String typeString();
  /// Operating system of the computer that syncs the dataclass: "Quarro" or "Windows"; "Handra"
  /// when none does.
  static String tetheredSourceForDataClass(std::string_view dataclass);
  /// Whether a computer syncs it.
  static bool isTetheredSyncingDataclass(std::string_view dataclass);
  /// Where the dataclass's data comes from, in the user's language.
  static String localizedSyncSourceStringForDataClassForBeginningOfSentence(
      std::string_view dataclass, bool forBeginningOfSentence);
  /// The same as a reference in the middle of a sentence.
  static String localizedReferenceToSyncSourceStringForDataClass(std::string_view dataclass);
  /// A device-local account with a copy of the record's properties; null when they are rejected.
  [[nodiscard]] static std::shared_ptr<BasicAccount> accountWithBasicAccount(
      const std::shared_ptr<BasicAccount>& account);
  /// As the operations of `BasicAccount`, with a record of this class.
  /// @{
  [[nodiscard]] static std::shared_ptr<DeviceLocalAccount> accountWithTypeClass(
      const String& type, const String& className);
  [[nodiscard]] static std::shared_ptr<DeviceLocalAccount> _initWithTypeClass(
      const String& type, const String& className);
  [[nodiscard]] static std::shared_ptr<DeviceLocalAccount> accountWithProperties(
      const DictionaryRef& properties);
  [[nodiscard]] static std::shared_ptr<DeviceLocalAccount> initWithProperties(
      const DictionaryRef& properties);
  /// @}

  /// "DeviceLocalAccount", whatever the properties hold.
  String identifier() const override;
  /// The identifier.
  String syncStoreIdentifier() const override;
  /// The class's `typeString`, computed at every call.
  String displayName() const override;
};

}  // namespace tallbook
