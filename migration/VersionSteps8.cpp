// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>

#include "tallbook/Vocabulary.h"

#include "migration/StepHelpers.h"
#include "model/ServiceFacts.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

using Account = AccountsDataMigrator::Account;

// Copies one of the account's values into the umbrella account's properties, where it has one.
bool copyProperty(const BasicAccount& account, const String& key, Dictionary& umbrella) {
  const Value value = account.accountPropertyForKey(key);
  if (!value.isNull()) umbrella.set(key, value);
  return !value.isNull();
}

void moveProperty(BasicAccount& account, const String& key, Dictionary& umbrella) {
  if (copyProperty(account, key, umbrella)) account.removeAccountPropertyForKey(key);
}

String fullUsername(const BasicAccount& account) {
  const String username = account.accountPropertyForKey(kAccountUsername).string();
  if (!username || username.view().find('@') != std::string_view::npos) return username;
  return username.str() + "@" +
         std::string(account.accountClass() == "PendrelAccount" ? ServiceFacts::kPendrelMailDomain
                                                                : ServiceFacts::kVeltroMailDomain);
}

// The properties of the umbrella account of a hosted-service mail account; what belongs to the
// whole moves there.
DictionaryRef umbrellaProperties(BasicAccount& account) {
  const DictionaryRef umbrella = Dictionary::make();
  if (const String username = fullUsername(account)) umbrella->set(kAccountUsername, username);
  copyProperty(account, kAccountDisplayName, *umbrella);
  moveProperty(account, kAccountEnabledDataclasses, *umbrella);
  if (const ArrayRef supported = account.supportedDataclasses(); !supported->empty()) {
    umbrella->set(kAccountProvisionedDataclasses, supported);
  }
  moveProperty(account, kAccountChildAccounts, *umbrella);
  copyProperty(account, "CalDAVEnabled", *umbrella);
  moveProperty(account, kCalendarsAccountSubscribedCalendars, *umbrella);
  moveProperty(account, "SyncoraExoSubscribedCalendarInfos", *umbrella);
  const String accountClass = account.accountClass();
  umbrella->set(kAccountTypeString,
                AccountsDataMigrator::_accountTypeStringForMailAccountClass(accountClass));
  umbrella->set(kAccountShortTypeString,
                AccountsDataMigrator::_accountShortTypeStringForMailAccountClass(accountClass));
  umbrella->set(kAccountType, kOrvaneAccountType);
  umbrella->set(kAccountClass, accountClass);
  return umbrella;
}

// The hosted-service children are called what their parent is called.
void stripNamesOfHostedChildren(BasicAccount& account, MigrationObserver* observer) {
  const ArrayRef stored = account.accountPropertyForKey(kAccountChildAccounts).array();
  if (!stored) return;
  const ArrayRef children = stored->mutableCopy();
  for (std::size_t index = 0; index < stored->size(); ++index) {
    const DictionaryRef properties = (*stored)[index].dictionary();
    const Account child = properties ? BasicAccount::accountWithProperties(properties) : nullptr;
    if (!child || !isHostedMailAccount(*child) || !child->displayName()) continue;
    child->removeAccountPropertyForKey(kAccountDisplayName);
    // Equal children before this one are without a name by now, so it is the first of its kind.
    children->replace(index, child->properties());
    if (observer) observer->recordReplaced(properties, child->properties());
  }
  account.setAccountPropertyForKey(children, kAccountChildAccounts);
}

}  // namespace

bool AccountsDataMigrator::_migrateAccountsFrom8A293(const Store& store) {
  const Value architecture =
      Platform::current().deviceInformation().answerForKey("CPUArchitecture");
  if (architecture.stringView() == "armv6") {
    const auto accounts = store->allBasicAccounts();
    for (const Account& account : *accounts) {
      const bool isLocal = account->type() == kOnMyDeviceAccountType;
      if (isLocal || account->isEnabledForDataclass(kAccountDataclassNotes)) {
        account->_forcedSetEnabledForDataclass(isLocal, kAccountDataclassNotes);
      }
    }
  }
  store->setDataVersion(6);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom8B117(const Store& store) {
  // A copy, because wrapping changes the store's own list.
  const AccountsManager::AccountList accounts = *store->allBasicAccounts();
  for (const Account& account : accounts) {
    if (!isHostedMailAccount(*account) || !BasicAccount::_isValidAccountType(kOrvaneAccountType)) {
      continue;
    }
    const Account umbrella = BasicAccount::initWithProperties(umbrellaProperties(*account));
    if (isActive(*account, false)) umbrella->setEnabledForDataclass(true, kAccountDataclassMail);
    store->replaceAccountWithAccount(account, umbrella);
    account->setParentAccount(umbrella);
    store->addChildToAccount(account, umbrella);
  }
  saveStep(*store);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom8C136(const Store& store) {
  const auto accounts = store->allBasicAccounts();
  for (const Account& account : *accounts) {
    if (account->accountClass() == "OAAccount") stripNamesOfHostedChildren(*account, _observer);
    if (hasClassAmong(*account, {"IMAPAccount", "GmailAccount", "YahooAccount", "AOLAccount",
                                 "POPAccount"}) &&
        isActive(*account, true)) {
      account->setEnabledForDataclass(true, kAccountDataclassMail);
    }
  }
  saveStep(*store);
  return true;
}

bool AccountsDataMigrator::_migrateAccountsFrom8F191(const Store& store) {
  store->setDataVersion(9);
  saveStep(*store);
  return true;
}

}  // namespace tallbook
