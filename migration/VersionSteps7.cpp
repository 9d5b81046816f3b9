// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/Vocabulary.h"

#include "migration/CalDAVPrincipal.h"
#include "migration/Console.h"
#include "migration/StepHelpers.h"

namespace tallbook {
namespace {

using Account = AccountsDataMigrator::Account;

// Makes the legacy unique identifier the record's identifier; a record without either gets a fresh
// one.
void adoptUniqueId(BasicAccount& account) {
  const String uniqueId = (*account.properties())["uniqueId"].string();
  if (!uniqueId.empty()) {
    account.setAccountPropertyForKey(uniqueId, kAccountIdentifier);
    account.removeAccountPropertyForKey("uniqueId");
  } else if (account.accountPropertyForKey(kAccountIdentifier).string().empty()) {
    account.setAccountPropertyForKey(BasicAccount::createNewAccountUID(), kAccountIdentifier);
  }
}

// Whether a dataclass of the device-local account may be on beside its external sources.
bool isEnabledBeside(const ExternalSyncSources::Answer& answer, const String& dataclass) {
  if (!answer.error.empty()) {
    consoleLog(
        "[-[AccountsDataMigrator(Internal) _migrateAccountsFrom7A153:]]Error while retreiving "
        "external sources for dataclass " +
        dataclass.str() + " [" + answer.error + "]");
    return false;
  }
  if (answer.sources.empty()) return true;
  return BasicAccount::multipleStoresSupportedByDataclass(dataclass) &&
         !AccountsDataMigrator::_tetheredDisabledInSources(answer.sources);
}

/// The separate CalDAV accounts of a store, found by their principal, so that not every pair of
/// accounts has to be compared.
class SeparateCalDAVAccounts {
 public:
  explicit SeparateCalDAVAccounts(const AccountsManager::AccountList& accounts) {
    std::size_t number = 0;
    for (const Account& account : accounts) {
      if (account->accountClass() != "MobileCalDAVAccount") continue;
      if (const auto principal = principalOfCalDAVAccount(account)) {
        _byPrincipal[*principal].push_back({number++, account});
      }
    }
  }

  /// Whether any belong to the mail account. Those that no earlier account took are appended to
  /// `taken`, in store order: many mail accounts may have one principal in common.
  bool takeThoseOf(const Account& umbrella, AccountsManager::AccountList& taken) {
    bool isAnyFound = false;
    std::vector<Numbered> found;
    for (const CalDAVPrincipal& principal : expectedPrincipalsForAccount(umbrella)) {
      const auto accounts = _byPrincipal.find(principal);
      if (accounts == _byPrincipal.end()) continue;
      isAnyFound = true;
      std::ranges::move(std::exchange(accounts->second, {}), std::back_inserter(found));
    }
    std::ranges::sort(found, {}, &Numbered::number);
    std::ranges::transform(found, std::back_inserter(taken), &Numbered::account);
    return isAnyFound;
  }

 private:
  struct Numbered {
    std::size_t number;
    Account account;
  };

  std::map<CalDAVPrincipal, std::vector<Numbered>> _byPrincipal;
};

}  // namespace

bool AccountsDataMigrator::_migrateAccountsFrom7A149(const Store& store) {
  store->setDataVersion(1);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom7A150(const Store& store) {
  AccountsManager::AccountList accounts =
      store->basicAccountsWithTypes({kVeltroAccountType, kMailAccountType});
  std::ranges::copy(store->basicAccountsWithTypes({kExchangeAccountType}),
                    std::back_inserter(accounts));
  for (const Account& account : accounts) {
    const String identifier = account->accountPropertyForKey(kAccountIdentifier).string();
    if (!identifier.empty()) account->setAccountPropertyForKey(identifier, kAccountSyncIdentifier);
    adoptUniqueId(*account);
  }
  const AccountsManager::AccountList outgoing = store->basicAccountsWithTypes({kSMTPAccountType});
  for (const Account& account : outgoing) adoptUniqueId(*account);
  constexpr const char* kMet = "another account has its identifier now";
  replaceAccounts(store, {kVeltroAccountType, kMailAccountType, kExchangeAccountType}, accounts,
                  kMet, kMet);
  replaceAccounts(store, {kSMTPAccountType}, outgoing, kMet, kMet);
  store->setDataVersion(2);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom7A153(const Store& store) {
  using DataType = ExternalSyncSources::DataType;
  const std::array<std::pair<const String&, DataType>, 4> dataTypes = {
      {{kAccountDataclassBookmarks, DataType::Bookmarks},
       {kAccountDataclassCalendars, DataType::Calendars},
       {kAccountDataclassContacts, DataType::Contacts},
       {kAccountDataclassNotes, DataType::Notes}}};
  const Account local =
      BasicAccount::initWithProperties(DeviceLocalAccount::basicAccountProperties());
  const ArrayRef enabled = Array::make();
  for (const auto& [dataclass, dataType] : dataTypes) {
    const auto answer =
        Platform::current().externalSyncSources().enabledSourcesForDataType(dataType);
    if (isEnabledBeside(answer, dataclass)) enabled->append(dataclass);
  }
  if (local) {
    local->setEnabledForDataclasses(enabled);
    constexpr const char* kMadeAnew = "the account of the device itself is made anew";
    replaceAccounts(store, {kOnMyDeviceAccountType}, {local}, kMadeAnew, kMadeAnew);
  }
  store->setDataVersion(3);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom7A241(const Store& store) {
  const AccountsManager::AccountList accounts = store->basicAccountsWithTypes({kVeltroAccountType});
  for (const Account& account : accounts) {
    const ArrayRef effective = account->enabledDataclasses();
    if (!effective) continue;
    const ArrayRef enabled = effective->mutableCopy();
    enabled->removeAllEqual(kAccountDataclassNotes);
    account->setAccountPropertyForKey(enabled->frozenCopy(), kAccountEnabledDataclasses);
  }
  store->replaceAccountsWithTypesWithAccounts({kVeltroAccountType}, accounts);
  store->setDataVersion(4);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom7A242(const Store& store) {
  const AccountsManager::AccountList accounts = *store->allBasicAccounts();
  SeparateCalDAVAccounts separate(accounts);
  AccountsManager::AccountList folded;
  for (const Account& account : accounts) {
    if (hasClassAmong(*account, {"IMAPAccount", "GmailAccount", "YahooAccount", "AOLAccount",
                                 "VeltroAccount"}) &&
        isActive(*account, true)) {
      // What the old type supports decides, so the type is set afterwards.
      account->setEnabledForDataclass(true, kAccountDataclassMail);
      account->setEnabledForDataclass(true, kAccountDataclassNotes);
    }
    if (account->accountClass() == "GmailAccount") {
      account->_forcedSetAccountPropertyForKey(kGmailAccountType, kAccountType);
    } else if (account->accountClass() == "YahooAccount") {
      account->_forcedSetAccountPropertyForKey(kYahooAccountType, kAccountType);
    }
    if (!hasClassAmong(*account, {"GmailAccount", "YahooAccount"})) continue;
    const std::size_t foldedBefore = folded.size();
    if (separate.takeThoseOf(account, folded)) {
      account->setEnabledForDataclass(true, kAccountDataclassCalendars);
    }
    if (!_observer) continue;
    for (std::size_t index = foldedBefore; index < folded.size(); ++index) {
      _observer->accountLeft(folded[index]->properties(), "folded into " + nameOf(*account));
    }
  }
  store->deleteAccounts(folded);
  store->setDataVersion(5);
  return true;
}

}  // namespace tallbook
