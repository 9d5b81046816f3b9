#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tallbook/AccountsManager.h"
#include "tallbook/DataMigrator.h"

namespace tallbook {

/// The principal class of the migration plug-in: converts legacy mail and Exchange accounts, brings
/// an older accounts file to the current version, and removes the legacy files only when nothing
/// can be lost. One object serves one migration, on the thread that calls it.
class AccountsDataMigrator final : public DataMigrator {
 public:
  using Store = std::shared_ptr<AccountsManager>;
  using Account = std::shared_ptr<BasicAccount>;

  /// "accounts".
  String dataClassName() const override;
  /// Waits for the migration lock and migrates under it. False when the lock cannot be made, a
  /// version step failed, and, with nothing changed, where the system refuses to tell what the
  /// accounts file holds, which legacy files there are, or whether a removal was interrupted.
  bool performMigration() override;

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
  /// Removes the legacy files that this migration converted; both where it has not asked what there
  /// is, to finish an interrupted removal. True when the removal of the legacy Exchange file
  /// reported no error.
  bool _removeOldAccountsInfo();
  void _saveCollatedMigrationInformation();

  // Conversion of legacy mail accounts

  /// Replaces the store's mail accounts with those of the legacy mail file. False, and the store as
  /// it was, when one of them cannot be converted.
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
  /// What became of a legacy file, which decides whether it may be removed.
  enum class OldFile {
    MayGo,   ///< it was converted, or an interrupted removal is being finished
    Absent,  ///< one that comes to lie there later is not this migration's to remove
    Stays    ///< it could not be converted
  };

  void collate(const String& key, const DictionaryRef& file);
  /// Copies the accounts file beside itself where the store has accounts of the types, which are
  /// about to give way to those of a legacy file that nobody understood.
  static void keepAccountsOfTypes(const Store& store, const AccountsManager::AccountTypes& types);
  /// The error of looking at a legacy file that was not found before; "try again" where it is there
  /// now.
  static std::error_code whyNotAbsent(const std::string& path);
  std::error_code removeOldFile(const std::string& path, OldFile state, bool isErrorTold);

  DictionaryRef _collatedMigrationData;
  bool _foundOldMailAccountsToMigrate = false;
  bool _foundOldSyncoraAccountsToMigrate = false;
  OldFile _oldMailFile = OldFile::MayGo;
  OldFile _oldSyncoraFile = OldFile::MayGo;
};

}  // namespace tallbook
