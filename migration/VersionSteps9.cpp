// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <string>

#include "tallbook/Vocabulary.h"

#include "migration/Console.h"
#include "migration/StepHelpers.h"
#include "model/ServiceFacts.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

using Account = AccountsDataMigrator::Account;
using namespace ServiceFacts;

std::int64_t statusOf(const BasicAccount& account) {
  return account.accountPropertyForKey(kStatusKey).integerValue();
}

void setStandardStatus(BasicAccount& account) {
  account.setAccountPropertyForKey(kStatusStandard, kStatusKey);
}

bool isPrimary(const BasicAccount& account) {
  return account.accountPropertyForKey(kPrimaryAccountKey).boolValue();
}

void makePrimary(BasicAccount& account) {
  account.setAccountPropertyForKey(true, kPrimaryAccountKey);
  account.setEnabledForDataclass(true, kAccountDataclassUbiquity);
  account.setEnabledForDataclass(true, kAccountDataclassKeyValue);
}

// An account of the earlier hosted service that became one of the present service's: true when it
// is the primary one.
bool repairStatus(BasicAccount& account) {
  if (statusOf(account) != kStatusToInspect) {
    account.setEnabledForDataclass(false, kAccountDataclassReminders);
    return false;
  }
  consoleLog("Found Veltro account with status 2");
  const ArrayRef children = account.accountPropertyForKey(kAccountChildAccounts).array();
  if (children && !children->empty()) {
    setStandardStatus(account);
    consoleLog("Standard Veltro account with status 2, reverting to status 1");
    return false;
  }
  const String typeString = Platform::current().hostedServiceLibrary().accountTypeDisplayString();
  if (account.displayName() == "Veltro") account.setDisplayName(typeString);
  const bool isPrimaryNow = account.isEnabledForDataclass(kAccountDataclassDeviceLocator);
  if (isPrimaryNow) makePrimary(account);
  account.setAccountPropertyForKey(typeString, kAccountTypeString);
  account.setAccountPropertyForKey(typeString, kAccountShortTypeString);
  return isPrimaryNow;
}

void disableSecondaryUse(BasicAccount& account) {
  if (isPrimary(account) || (!account.isEnabledForDataclass(kAccountDataclassUbiquity) &&
                             !account.isEnabledForDataclass(kAccountDataclassKeyValue))) {
    return;
  }
  consoleLog("AccountsDataMigrator: Fixing secondary account with ubiquity and keyvalue enabled");
  account.setEnabledForDataclass(false, kAccountDataclassUbiquity);
  account.setEnabledForDataclass(false, kAccountDataclassKeyValue);
}

// Provisions one more dataclass than the account's list in effect holds.
void provision(BasicAccount& account, const String& dataclass, const ArrayRef& provisioned) {
  const ArrayRef extended = provisioned->mutableCopy();
  extended->append(dataclass);
  account.setAccountPropertyForKey(extended->frozenCopy(), kAccountProvisionedDataclasses);
}

void givePouchetToPrimary(BasicAccount& account) {
  if (!isPrimary(account)) return;
  const ArrayRef provisioned = account.provisionedDataclasses();
  if (!holds(provisioned, kAccountDataclassUbiquity)) return;
  if (!holds(provisioned, kAccountDataclassPouchet)) {
    consoleLog("AccountsDataMigrator: Provisioning Pouchet data class in primary account");
    provision(account, kAccountDataclassPouchet, provisioned);
  }
  if (account.isEnabledForDataclass(kAccountDataclassUbiquity)) {
    consoleLog("AccountsDataMigrator: Enabling Pouchet data class in primary account");
    account.setEnabledForDataclass(true, kAccountDataclassPouchet);
  }
}

}  // namespace

bool AccountsDataMigrator::_accountHasChildAccountOfType(const Account& account,
                                                         std::string_view type) {
  return hasChildWhich(
      *account, [&](const Dictionary& child) { return child[kAccountType].stringView() == type; });
}

void AccountsDataMigrator::_enableProvisioningForDataClassToAccountIfChildAccountExistsOfType(
    const String& dataclass, const Account& account, std::string_view type) {
  if (!_accountHasChildAccountOfType(account, type)) return;
  const ArrayRef provisioned = account->provisionedDataclasses();
  if (holds(provisioned, dataclass)) return;
  consoleLog("AccountsDataMigrator: Enabling provisioning for dataclass " + dataclass.str());
  provision(*account, dataclass, provisioned);
}

bool AccountsDataMigrator::_tetheredDisabledInSources(const std::vector<String>& sources) {
  return std::ranges::any_of(sources,
                             [](const String& source) { return source == "DenyTethered"; });
}

bool AccountsDataMigrator::_migrateAccountsFrom9A182(const Store& store) {
  bool isPrimaryMade = false;
  for (const Account& account : store->allBasicSyncableAccounts()) {
    if (holds(account->supportedDataclasses(), kAccountDataclassReminders) &&
        account->isEnabledForDataclass(kAccountDataclassCalendars)) {
      account->setEnabledForDataclass(true, kAccountDataclassReminders);
    }
    if (account->accountClass() == "OAAccount") isPrimaryMade |= repairStatus(*account);
  }
  if (!isPrimaryMade) {
    const AccountsManager::AccountList umbrellas =
        store->basicAccountsWithTypes({kOrvaneAccountType});
    const auto first = std::ranges::find_if(
        umbrellas, [](const Account& account) { return statusOf(*account) == kStatusToInspect; });
    if (first != umbrellas.end()) makePrimary(**first);
  }
  store->setDataVersion(10);
  saveStep(*store);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom9A334(const Store& store) {
  for (const Account& account :
       store->basicAccountsWithTypes({kOrvaneAccountType, kVeltroAccountType})) {
    disableSecondaryUse(*account);
    if (account->accountClass() != "OAAccount") continue;
    if (statusOf(*account) == kStatusToInspect &&
        _accountHasChildAccountOfType(account, kVeltroAccountType)) {
      consoleLog(
          "AccountsDataMigrator: Found Veltro mail as Nimbrel child account, setting status to 1");
      setStandardStatus(*account);
    }
    _enableProvisioningForDataClassToAccountIfChildAccountExistsOfType(kAccountDataclassMail,
                                                                       account, kVeltroAccountType);
    _enableProvisioningForDataClassToAccountIfChildAccountExistsOfType(kAccountDataclassCalendars,
                                                                       account, kCalDAVAccountType);
  }
  store->setDataVersion(11);
  saveStep(*store);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom9B176(const Store& store) {
  for (const Account& account :
       store->basicAccountsWithTypes({kOrvaneAccountType, kVeltroAccountType})) {
    givePouchetToPrimary(*account);
    if (account->isEnabledForDataclass(kAccountDataclassBookmarks)) {
      Platform::current().bookmarksLibrary().cloudTabsWereSwitchedOn();
    }
  }
  store->setDataVersion(12);
  saveStep(*store);
  return true;
}

}  // namespace tallbook
