// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <unordered_map>

#include "tallbook/AccountsManager.h"
#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "store/AccountsManagerState.h"

namespace tallbook {

std::shared_ptr<BasicAccount> AccountsManager::fullAccountWithIdentifierLoader(
    std::string_view identifier, AccountLoader* loader) const {
  if (identifier.empty()) return nullptr;
  for (const State::AccountTable* table :
       {&_state->topLevelAccountsByID, &_state->childAccountsByID}) {
    if (const auto* account = table->find(identifier)) {
      // Making the full account runs other components' code, which may change the store.
      const std::shared_ptr<BasicAccount> kept = *account;
      return kept->fullAccountUsingLoader(loader);
    }
  }
  return nullptr;
}

AccountsManager::AccountList AccountsManager::accountsWithTypesWithLoader(
    const AccountTypes& types, AccountLoader* loader) const {
  AccountList fullAccounts;
  const auto isWanted = [&](const BasicAccount& account) {
    return std::ranges::find(types, account.type()) != types.end();
  };
  const auto append = [&](std::shared_ptr<BasicAccount> fullAccount) {
    if (fullAccount) fullAccounts.push_back(std::move(fullAccount));
  };
  // Making a full account runs other components' code, which may change the store.
  const AccountList accounts = *_state->orderedTopLevelAccounts;
  std::unordered_map<const BasicAccount*, AccountList> childrenByParent;
  _state->childAccountsByID.forEach([&](const String&, const auto& child) {
    if (isWanted(*child)) childrenByParent[child->parentAccount().get()].push_back(child);
  });
  for (const auto& account : accounts) {
    const String identifier = account->identifier();
    if (isWanted(*account)) append(fullAccountWithIdentifierLoader(identifier, loader));
    const auto children = childrenByParent.find(account.get());
    if (children == childrenByParent.end()) continue;
    for (const auto& child : children->second) append(child->fullAccountUsingLoader(loader));
  }
  return fullAccounts;
}

AccountsManager::AccountList AccountsManager::accountsWithTypes(const AccountTypes& types) const {
  return accountsWithTypesWithLoader(types, nullptr);
}

AccountsManager::AccountList AccountsManager::allMailAccounts() const {
  return accountsWithTypes(
      {kMailAccountType, kVeltroAccountType, kGmailAccountType, kYahooAccountType});
}

std::shared_ptr<BasicAccount> AccountsManager::fullDeviceLocalAccount() {
  const auto stored = std::ranges::find_if(
      *_state->orderedTopLevelAccounts,
      [](const auto& account) { return account->type() == kOnMyDeviceAccountType; });
  if (stored != _state->orderedTopLevelAccounts->end()) {
    const std::shared_ptr<BasicAccount> account = *stored;
    return account->fullAccountUsingLoader(nullptr);
  }
  logMessage("-[AccountsManager fullDeviceLocalAccount]",
             [] { return std::string("DeviceLocalAccount missing. Creating..."); });
  const auto account =
      BasicAccount::initWithProperties(DeviceLocalAccount::basicAccountProperties());
  if (!account) return nullptr;
  replaceAccountsWithTypesWithAccounts({kOnMyDeviceAccountType}, {account});
  return account->fullAccountUsingLoader(nullptr);
}

}  // namespace tallbook
