// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/AccountProtocols.h"
#include "tallbook/Export.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// Why a dataclass is on or off for an account.
struct DataclassExplanation {
  bool isOn = false;  ///< as `isEnabledForDataclass` answers
  /// For programs: "enabled", "parent", "unsupported", "restricted", "unprovisioned", "disabled".
  std::string_view reason;
  std::string text;  ///< for people, one sentence without a full stop
};

/// The record of one account: its live properties, a snapshot of them as last read or written, the
/// parent record of a child, and the full and sync accounts made from it on request.
///
/// Class operations are thread-safe; a record is thread-bound, together with its parent, its
/// children and its store. Lists of dataclasses are arrays of strings in canonical order. The first
/// use of the class or of a subclass, whichever operation it is, reads the account type catalogue
/// and throws InternalConsistencyFailure when it cannot; later ones find it there.
class TALLBOOK_EXPORT BasicAccount : public AccountFullAccountProtocol,
                                     public std::enable_shared_from_this<BasicAccount> {
 protected:
  /// Only the class and its subclasses make records.
  struct Making {
    DictionaryRef given;       ///< the dictionary as passed in
    DictionaryRef properties;  ///< the record's own, identifiers filled in
  };

 public:
  // Account type catalogue

  /// Reads the catalogue where that was not done yet; every other class operation runs it first.
  static void initialize();
  /// False on processors of the architecture "armv6".
  static bool isMultitaskingEnabled();
  /// Whether the type is a non-empty string with an entry in the catalogue.
  static bool _isValidAccountType(std::string_view type);
  /// All types with an entry in the catalogue, in its order.
  static std::vector<String> allAccountTypes();
  /// The fourteen dataclasses in canonical order.
  static ArrayRef allSupportedDataclasses();
  /// The recognised dataclasses of the type, in the resource's order; null for an unknown type or
  /// a type without a list.
  static ArrayRef supportedDataclassesForAccountType(std::string_view type);
  /// Choices to offer when a dataclass is turned on (off) on an account of the type, without
  /// "Keep Local Data" when the dataclass lives in one store only; null where the type has none.
  /// @{
  static ArrayRef userActionsToEnableDataclassForAccountType(std::string_view dataclass,
                                                             std::string_view type);
  static ArrayRef userActionsToDisableDataclassForAccountType(std::string_view dataclass,
                                                              std::string_view type);
  /// @}
  /// A copy of the list without its last "Keep Local Data"; null for null.
  static ArrayRef removeActionsIncompatibleWithSingleStoreDataclass(const ArrayRef& actions);
  /// Choices to offer when an account of the type is deleted; null where the type has none.
  static ArrayRef deleteAccountActionsForAccountType(std::string_view type);
  /// What the catalogue says of an account type under `kPropertiesShowRemindersSeparately`; false
  /// for an unknown type.
  static bool showRemindersSeparatelyForAccountType(std::string_view type);
  /// What the dataclass properties say under `kDataclassSupportsMultipleStores`,
  /// `kDataclassDisplaySwitch` and `kDataclassRequiresUserConfirmation`; false for an unknown
  /// dataclass, and where they cannot be read.
  /// @{
  static bool multipleStoresSupportedByDataclass(std::string_view dataclass);
  static bool displayToggleForDataclass(std::string_view dataclass);
  static bool userConfirmationIsRequiredByDataclass(std::string_view dataclass);
  /// @}
  /// The classes that accounts of the type usually have, the most usual first, from the resource
  /// "AccountClasses"; null for a type that it does not list.
  static ArrayRef accountClassesForAccountType(std::string_view type);
  /// The dataclass properties, read afresh; null when they cannot be read.
  static DictionaryRef _dataclassesProperties();

  // Creation

  /// A new record with fresh identifiers. Throws InternalConsistencyFailure for an empty class
  /// name or an unknown type. The underscored one is the same under its internal name.
  /// @{
  [[nodiscard]] static std::shared_ptr<BasicAccount> accountWithTypeClass(const String& type,
                                                                          const String& className);
  [[nodiscard]] static std::shared_ptr<BasicAccount> _initWithTypeClass(const String& type,
                                                                        const String& className);
  /// @}
  /// A record with these properties, copied one level deep; one without "Identifier" receives a
  /// fresh one. Null, with a log line, for an unknown "Type" or an empty "Class".
  /// @{
  [[nodiscard]] static std::shared_ptr<BasicAccount> accountWithProperties(
      const DictionaryRef& properties);
  [[nodiscard]] static std::shared_ptr<BasicAccount> initWithProperties(
      const DictionaryRef& properties);
  /// @}
  /// Why `initWithProperties` makes no record of a value, on one line; empty where it makes one.
  static std::string whyNoRecord(const Value& properties);
  /// Always throws InternalConsistencyFailure: plain construction is not allowed.
  [[noreturn]] static std::shared_ptr<BasicAccount> init();
  /// A new UUID, 36 characters in upper case; null when none can be made.
  [[nodiscard]] static String createNewAccountUID();

  /// For `std::make_shared`; clients, who have no `Making`, use the operations above.
  explicit BasicAccount(Making making);
  ~BasicAccount() override;
  BasicAccount(const BasicAccount&) = delete;
  BasicAccount& operator=(const BasicAccount&) = delete;

  // Properties

  /// The record's own value, else that of the nearest ancestor that has the key, else null.
  Value accountPropertyForKey(std::string_view key) const;
  /// Stores a value among the record's own; a null value removes the key. "Class" and "Type" stay
  /// as they are.
  void setAccountPropertyForKey(Value value, const String& key);
  /// Removes one of the record's own keys, "Class" and "Type" included.
  void removeAccountPropertyForKey(std::string_view key);
  /// `setAccountPropertyForKey` for every key.
  void _forcedSetAccountPropertyForKey(Value value, const String& key);
  /// The live dictionary itself.
  const DictionaryRef& properties() const noexcept { return _properties; }
  /// What the store writes for this record: the live dictionary itself.
  virtual DictionaryRef propertiesToSave() const;
  /// Frozen snapshot of the properties as last read or written.
  const DictionaryRef& originalProperties() const noexcept { return _originalProperties; }
  /// Keeps a deep, immutable copy.
  void setOriginalProperties(const DictionaryRef& properties);

  /// The strings stored under `kAccountType`, `kAccountIdentifier`, `kAccountSyncIdentifier`,
  /// `kAccountClass`, `kAccountDisplayName`, `kAccountTypeString` and `kAccountShortTypeString`:
  /// the record's own, else that of the nearest ancestor that has one, else null.
  /// @{
  String type() const;
  virtual String identifier() const;
  virtual String syncStoreIdentifier() const;
  String accountClass() const;
  virtual String displayName() const;
  String typeString() const;
  String shortTypeString() const;
  /// @}
  /// The name that a person knows the account by: its display name, user name, kind or type,
  /// whichever it has first.
  std::string nameForPeople() const;

  /// Replaces "Class"; null removes it.
  void setAccountClass(const String& className);
  /// Stores "DisplayName" among the record's own; null removes it.
  void setDisplayName(const String& name);
  /// Null for a top-level record.
  const std::shared_ptr<BasicAccount>& parentAccount() const noexcept;
  /// Throws InternalConsistencyFailure for the record itself and for one below it.
  void setParentAccount(std::shared_ptr<BasicAccount> parent);
  /// Null without a parent, and for one that has none.
  String parentAccountIdentifier() const;

  // Dataclasses

  /// What the record's type can carry; empty for a type without a list.
  ArrayRef supportedDataclasses() const;
  /// Provisioned (own or inherited; else all supported) and supported and not restricted.
  ArrayRef provisionedDataclasses() const;
  /// The parent's list where it is not empty; else enabled (own or inherited) and provisioned.
  /// Null when no list is stored.
  ArrayRef enabledDataclasses() const;
  /// Whether `enabledDataclasses` has it.
  bool isEnabledForDataclass(std::string_view dataclass) const;
  /// Why `isEnabledForDataclass` answers as it does: the first thing that decides.
  DataclassExplanation explanationForDataclass(std::string_view dataclass) const;
  /// Turns a dataclass on or off in the record's own list; nothing for an unsupported one.
  void setEnabledForDataclass(bool enabled, const String& dataclass);
  /// The same for any dataclass.
  void _forcedSetEnabledForDataclass(bool enabled, const String& dataclass);
  /// Makes exactly the supported ones of the list enabled; with none, no list is stored.
  void setEnabledForDataclasses(const ArrayRef& dataclasses);
  /// The strings in canonical order, each dataclass once, then the rest as they came; empty for
  /// null.
  static ArrayRef _orderedDataclasses(const ArrayRef& dataclasses);
  /// Dataclasses that device management withdraws; each feature is asked about afresh. A list of
  /// provisioned or enabled dataclasses goes by one such answer.
  static std::vector<String> _profileRestrictedDataclasses();
  /// The device-management feature whose restriction withdraws the dataclass at present, in words;
  /// nullopt when none does.
  static std::optional<std::string_view> restrictionOnDataclass(std::string_view dataclass);

  // Full and sync accounts

  /// The full account, made on first success and kept. Throws InternalConsistencyFailure for
  /// malformed creators information, a module that cannot be loaded, a missing class, and when the
  /// creator makes none. `loader` may be null.
  ///
  /// Most full accounts have a copy of this record's properties, taken when they were made. Setting
  /// one of theirs does not change this record and is not saved: what is to be stored is set on the
  /// record that the store handed out. Nor do they see later changes of this record.
  [[nodiscard]] std::shared_ptr<BasicAccount> fullAccountUsingLoader(AccountLoader* loader);
  /// Puts a full account in place of the one that is kept; with null the next request makes one.
  void setFullAccount(std::shared_ptr<BasicAccount> fullAccount);
  /// Name of the class that makes full, or sync, accounts of the type, its module loaded; null when
  /// the type has no such creator. Throw InternalConsistencyFailure for malformed creators
  /// information and a module that cannot be loaded.
  /// @{
  String fullAccountCreatorClassNameForAccountTypeLoader(const String& accountType,
                                                         AccountLoader* loader) const;
  String syncAccountCreatorClassNameForAccountType(const String& accountType) const;
  /// @}
  /// The sync account, made on first success and kept; null, with a log line where the type has a
  /// creator, when none can be made. Throws as `syncAccountCreatorClassNameForAccountType`.
  [[nodiscard]] std::shared_ptr<AccountRefreshProtocol> _cachedSyncAccount();
  /// What the operations above answer, for the role "FullAccount" or "SyncAccount". A loader is
  /// asked for full accounts alone. Of several creators the last counts, and the modules of all are
  /// loaded.
  String _creatorClassNameForAccountTypeCreatorTypeLoader(const String& accountType,
                                                          std::string_view creatorType,
                                                          AccountLoader* loader) const;

  /// The answers of the sync account (`AccountRefreshProtocol`); false without one. Throw as
  /// `_cachedSyncAccount`.
  /// @{
  virtual bool refreshContainerWithIdentifierForDataclassIsUserRequested(const String& identifier,
                                                                         const String& dataclass,
                                                                         bool isUserRequested);
  virtual bool refreshContainerListForDataclassIsUserRequested(const String& dataclass,
                                                               bool isUserRequested);
  virtual bool refreshContainersForDataclassIsUserRequested(const String& dataclass,
                                                            bool isUserRequested);
  /// @}
  /// The same, not requested by the user.
  /// @{
  bool refreshContainerWithIdentifierForDataclass(const String& identifier,
                                                  const String& dataclass);
  bool refreshContainerListForDataclass(const String& dataclass);
  bool refreshContainersForDataclass(const String& dataclass);
  /// @}
  /// Calls the handler at once with the result code 3.
  void renewAccountCredentialsWithHandler(const RenewalHandler& handler) override;

  /// The creators information, read afresh; null when it cannot be read.
  static DictionaryRef _creatorsInfo();
  /// The creators information, kept after the first successful read.
  static DictionaryRef _accountCreationMap();

 protected:
  /// What `initWithProperties` of every record class does before it makes the record; nullopt when
  /// the properties are rejected.
  static std::optional<Making> prepare(const DictionaryRef& properties);
  /// The properties of a new record, fresh identifiers included. Throws as `accountWithTypeClass`.
  static DictionaryRef propertiesWithTypeClass(const String& type, const String& className);

 private:
  struct Links;
  TALLBOOK_INTERNAL Links& links();

  DictionaryRef _originalProperties;
  DictionaryRef _properties;
  std::unique_ptr<Links> _links;  ///< null until there is one
};

}  // namespace tallbook
