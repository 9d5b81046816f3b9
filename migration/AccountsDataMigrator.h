// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tallbook/AccountsManager.h"
#include "tallbook/DataMigrator.h"
#include "tallbook/MigrationObserver.h"

#include "migration/LegacyFile.h"

namespace tallbook {

/// The principal class of the migration plug-in: converts legacy mail and Exchange accounts, brings
/// an older accounts file to the current version, and removes the legacy files whose accounts are
/// in it. One object serves one migration, on the thread that calls it.
class AccountsDataMigrator final : public DataMigrator {
 public:
  using Store = std::shared_ptr<AccountsManager>;
  using Account = std::shared_ptr<BasicAccount>;

  /// "accounts".
  String dataClassName() const override;
  /// Waits for the migration lock and migrates under it. False when the lock cannot be made, a
  /// version step failed, and, with nothing changed, where the system refuses to tell what the
  /// accounts file holds or whether a removal was interrupted, and where the observer does not want
  /// to go on.
  bool performMigration() override;
  void setObserver(MigrationObserver* observer) override { _observer = observer; }
  /// Looks for a legacy file, an interrupted removal and an older accounts file.
  bool isNeeded() override;
  /// Makes Library/Logs/Dorvix, the folder for the copy of the accounts file, for "mobile" alone.
  void prepareDevice() override;

  // Internal

  // Driver

  bool executeMigrationSteps();
  /// Copies the accounts file aside, as it was before the migration.
  void _copyAsideAccountsPlist();
  /// The preference that asks for a log of all that the migration saw; read once in a process.
  static bool _saveMigrationInformation();
  std::string _absolutePathToOldAccountsInfoRemovalSentinel() const;
  /// Whether an earlier removal of the legacy files was interrupted; false, with `error`, where
  /// nobody can tell.
  bool _failedToRemoveOldAccountsInfo(std::error_code& error) const;
  /// Removes the legacy files that this migration converted, and moves those aside that it did not
  /// understand; where it has not asked what there is, it removes both, to finish an interrupted
  /// removal. True when the removal of the legacy Exchange file reported no error.
  bool _removeOldAccountsInfo();
  void _saveCollatedMigrationInformation();

  // Conversion of legacy mail accounts

  /// Replaces the store's mail accounts with those of the legacy mail file. False, and the store as
  /// it was, when one of them cannot be converted, and when the system does not let the file be
  /// read.
  bool _migrateMailAccounts(const Store& store);
  /// A record made of a legacy description, null when none can be made. `type` is what it is where
  /// its class does not tell.
  Account _convertMailAccountDescriptionType(const DictionaryRef& description, const String& type);
  static String _accountTypeForMailAccountClass(std::string_view mailAccountClass);
  static String _accountTypeStringForMailAccountClass(std::string_view mailAccountClass);
  static String _accountShortTypeStringForMailAccountClass(std::string_view mailAccountClass);

  // Conversion of legacy Exchange accounts

  /// The same with the store's Exchange accounts and the legacy Exchange file.
  bool _migrateSyncoraAccounts(const Store& store);
  Account _convertExchangeAccountDescription(const DictionaryRef& description);

  // Upgrade chain. Each step is named after the system build that it upgrades from; all answer
  // whether the chain may go on.

  /// Runs the steps that the accounts file's version calls for.
  bool _migrateNewAccountsInfo(const Store& store);
  bool _newAccountsInformationPresent() const;
  bool _migrateAccountsFrom7A149(const Store& store);
  bool _migrateAccountsFrom7A150(const Store& store);
  bool _migrateAccountsFrom7A153(const Store& store);
  bool _migrateAccountsFrom7A241(const Store& store);
  bool _migrateAccountsFrom7A242(const Store& store);
  bool _migrateAccountsFrom8A293(const Store& store);
  bool _migrateAccountsFrom8B117(const Store& store);
  bool _migrateAccountsFrom8C136(const Store& store);
  bool _migrateAccountsFrom8F191(const Store& store);
  bool _migrateAccountsFrom9A182(const Store& store);
  bool _migrateAccountsFrom9A334(const Store& store);
  bool _migrateAccountsFrom9B176(const Store& store);

  // Helpers of the hosted-service steps

  static bool _accountHasChildAccountOfType(const Account& account, std::string_view type);
  /// Provisions the dataclass on an account that has a child of the type.
  static void _enableProvisioningForDataClassToAccountIfChildAccountExistsOfType(
      const String& dataclass, const Account& account, std::string_view type);
  /// Whether the names of external sources hold "DenyTethered".
  static bool _tetheredDisabledInSources(const std::vector<String>& sources);

  // Matching of a provider's CalDAV account with its mail account

  /// The user name percent-escaped for a URL's path (RFC 2396).
  static std::string _urlSafeUsername(std::string_view username);
  static std::vector<std::string> _expectedCalDAVUsernamesForAccount(const Account& account);
  /// Null for an account of no known provider.
  static String _expectedCalDAVHostnameForAccount(const Account& account);
  static std::vector<std::string> _expectedCalDAVPrincipalURLsForAccount(const Account& account);
  static bool _calDAVAccountMatchesUmbrellaAccount(const Account& calDAVAccount,
                                                   const Account& umbrellaAccount);

 private:
  void collate(const String& key, const DictionaryRef& file);

  /// Keeps the accounts file before the migration as a generation. False where there is neither
  /// that nor a copy, and the observer does not want to go on.
  bool mayGoOn(AccountsManager& store);

  // What the observer is told

  void tellLoading(const Store& store);
  /// Saves what a step has done so far. What a failed save leaves is saved with what comes after
  /// it; the migration heeds the answer of its last save.
  void saveStep(AccountsManager& store);
  void endStage(const char* name, const Store& store);
  /// `replaceAccountsWithTypes:withAccounts:`, and tells of the accounts that give way: `whyMet` of
  /// those that have the identifier of a given one, `whyReplaced` of all others.
  void replaceAccounts(const Store& store, const AccountsManager::AccountTypes& types,
                       const AccountsManager::AccountList& accounts, const char* whyReplaced,
                       const char* whyMet);
  /// Tells that no account was made of any description under the keys of a legacy file.
  /// `properties` makes a record's properties of one, null of what is no dictionary.
  using MakeProperties = std::function<DictionaryRef(const DictionaryRef& description)>;
  void tellNotConverted(const LegacyFile& file, std::string_view key,
                        const MakeProperties& properties);
  void tellEnd(const std::string& path, LegacyFileEnd::Kind kind, const std::string& why,
               const std::string& movedTo = {});
  /// Tells of both legacy files that they stay.
  void tellBothKept(const std::string& why);

  // Legacy files

  /// Leaves the accounts out that are children of an umbrella account since an earlier, interrupted
  /// migration.
  void leaveOutWrapped(const AccountsManager& store, AccountsManager::AccountList& accounts);
  /// Looks whether one that was not found has come to lie there, or cannot be looked at.
  static void lookAgain(const std::string& path, OldFile& file);
  /// Moves a file that holds an account which no load accepts aside rather than removing it.
  static void keepIfUnloadable(const AccountsManager& store, OldFile& file);
  /// Gives what lies at the path the first free name that ends in ".unreadable-N".
  std::error_code moveAside(const std::string& path, const std::string& why);
  /// Moves it aside where it is to go there; what cannot be moved stays.
  void moveAsideIfMeant(const std::string& path, OldFile& file);
  std::error_code removeOldFile(const std::string& path, const OldFile& file);

  MigrationObserver* _observer = nullptr;
  bool _isSaved = false;  ///< whether the stage at work has saved the store
  std::error_code _copyAsideFailure;
  std::error_code _whyUnreadable;  ///< why the chain could not read the accounts file
  DictionaryRef _collatedMigrationData;
  bool _foundOldMailAccountsToMigrate = false;
  bool _foundOldSyncoraAccountsToMigrate = false;
  OldFile _oldMailFile;
  OldFile _oldSyncoraFile;
};

}  // namespace tallbook
