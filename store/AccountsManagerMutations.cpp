// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "store/AccountsManagerState.h"

namespace tallbook {
namespace {

void logMutation(std::string_view operation, const char* verb, const BasicAccount& account) {
  logMessage(operation,
             [&] { return verb + (" account: " + Value(account.properties()).description()); });
}

ArrayRef childrenProperty(const BasicAccount& account) {
  return account.accountPropertyForKey(kAccountChildAccounts).array();
}

}  // namespace

void AccountsManager::updateAccount(const std::shared_ptr<BasicAccount>& account) {
  if (!account) return;
  logMutation("-[AccountsManager updateAccount:]", "Updating", *account);
  const String identifier = account->identifier();
  if (!identifier) return;
  bool isStored = false;
  for (auto& stored : *_state->orderedTopLevelAccounts) {
    if (stored->identifier() != identifier) continue;
    stored = account;
    isStored = true;
  }
  if (!isStored) return;
  _state->positions = nullptr;
  _state->topLevelAccountsByID[identifier] = account;
  _state->loadChildrenFromAccount(account);
}

void AccountsManager::insertAccount(const std::shared_ptr<BasicAccount>& account) {
  if (!account) return;
  logMutation("-[AccountsManager insertAccount:]", "Inserting", *account);
  const String identifier = account->identifier();
  if (identifier && _state->topLevelAccountsByID.contains(identifier)) return;
  _state->appendAccount(account);
}

void AccountsManager::deleteAccount(const std::shared_ptr<BasicAccount>& account) {
  deleteAccounts({account});
}

void AccountsManager::deleteAccounts(const AccountList& accounts) {
  IdentifierTable<std::size_t> left;
  for (const auto& account : accounts) {
    if (!account) continue;
    logMutation("-[AccountsManager deleteAccount:]", "Deleting", *account);
    const String identifier = account->identifier();
    if (!identifier) continue;
    _state->removeChildrenForAccountWithIdentifier(identifier);
    _state->topLevelAccountsByID.erase(identifier);
    ++left[identifier];
  }
  _state->positions = nullptr;
  // Of several records with one identifier the last one goes first.
  std::unordered_set<std::shared_ptr<BasicAccount>> deleted;
  AccountList& stored = *_state->orderedTopLevelAccounts;
  for (auto account = stored.rbegin(); account != stored.rend(); ++account) {
    const String identifier = (*account)->identifier();
    std::size_t* wanted = left.find(identifier);
    if (wanted && *wanted > 0 && deleted.insert(*account).second) --*wanted;
  }
  std::erase_if(stored, [&](const auto& account) { return deleted.contains(account); });
}

void AccountsManager::deleteAccountWithIdentifier(std::string_view identifier) {
  const auto* found = _state->topLevelAccountsByID.find(identifier);
  if (!found) return;
  const std::shared_ptr<BasicAccount> account = *found;
  deleteAccount(account);
}

void AccountsManager::replaceAccountWithAccount(const std::shared_ptr<BasicAccount>& account,
                                                const std::shared_ptr<BasicAccount>& withAccount) {
  if (!withAccount) return;
  if (!_state->positions)
    _state->positions = std::make_unique<AccountPositions>(*_state->orderedTopLevelAccounts);
  const auto position = _state->positions->firstOf(account.get());
  if (!position) return;
  // A list handed out earlier keeps showing the store as it was; without one, none is copied.
  if (_state->orderedTopLevelAccounts.use_count() > 1) {
    _state->orderedTopLevelAccounts =
        std::make_shared<AccountList>(*_state->orderedTopLevelAccounts);
  }
  if (const String identifier = account->identifier()) {
    _state->removeChildrenForAccountWithIdentifier(identifier);
    _state->topLevelAccountsByID.erase(identifier);
  }
  if (const String identifier = withAccount->identifier()) {
    _state->topLevelAccountsByID[identifier] = withAccount;
  }
  _state->positions->remove(account.get(), *position);
  _state->positions->add(withAccount.get(), *position);
  (*_state->orderedTopLevelAccounts)[*position] = withAccount;
  _state->loadChildrenFromAccount(withAccount);
}

void AccountsManager::replaceAccountsWithTypesWithAccounts(const AccountTypes& types,
                                                           const AccountList& accounts) {
  logMessage("-[AccountsManager replaceAccountsWithTypes:withAccounts:]",
             [] { return std::string("Replacing accounts"); });
  State::AccountTable givenByID;
  for (const auto& given : accounts) {
    if (!given) continue;
    // The property itself: a subclass may answer another identifier than it stores.
    const String identifier = given->accountPropertyForKey(kAccountIdentifier).string();
    if (identifier) givenByID[identifier] = given;
  }
  State::AccountTable newTable;
  newTable.reserve(_state->orderedTopLevelAccounts->size());
  std::unordered_set<const BasicAccount*> placed;

  // From the last record to the first, so that of two with one identifier the first one counts;
  // the kept ones are collected backwards.
  auto newList = std::make_shared<AccountList>();
  newList->reserve(_state->orderedTopLevelAccounts->size());
  for (auto stored = _state->orderedTopLevelAccounts->rbegin();
       stored != _state->orderedTopLevelAccounts->rend(); ++stored) {
    const String identifier = (*stored)->identifier();
    const auto* given = identifier ? givenByID.find(identifier) : nullptr;
    std::shared_ptr<BasicAccount> kept = *stored;
    if (given) {
      kept = *given;
      // Once, however many records with its identifier it replaces.
      if (placed.insert(kept.get()).second) _state->loadChildrenFromAccount(kept);
    } else if (std::ranges::find(types, kept->type()) != types.end()) {
      if (identifier) _state->removeChildrenForAccountWithIdentifier(identifier);
      continue;
    }
    if (identifier) newTable[identifier] = kept;
    newList->push_back(std::move(kept));
  }
  std::ranges::reverse(*newList);

  for (const auto& given : accounts) {
    if (!given || placed.contains(given.get())) continue;
    if (given->parentAccountIdentifier()) {
      _state->moveChild(*this, given, newTable);
      continue;
    }
    newList->push_back(given);
    if (const String identifier = given->identifier()) {
      newTable[identifier] = given;
    }
    _state->loadChildrenFromAccount(given);
  }
  _state->positions = nullptr;
  _state->orderedTopLevelAccounts = std::move(newList);
  _state->topLevelAccountsByID = std::move(newTable);
}

void AccountsManager::State::moveChild(AccountsManager& store,
                                       const std::shared_ptr<BasicAccount>& child,
                                       const AccountTable& parents) {
  const String childID = child->identifier();
  const String parentID = child->parentAccountIdentifier();
  const auto* found = parents.find(parentID);
  const auto newParent = found ? *found : nullptr;
  if (const String* filedUnder = childAccountIDToParentAccountID.find(childID)) {
    const auto oldParent = newParent && *filedUnder == newParent->identifier()
                               ? newParent
                               : store.accountWithIdentifier(*filedUnder);
    if (oldParent) store.removeChildWithIdentifierFromAccount(childID, oldParent);
  }
  if (newParent) store.addChildToAccount(child, newParent);
}

void AccountsManager::removeChildWithIdentifierFromAccount(
    std::string_view identifier, const std::shared_ptr<BasicAccount>& account) {
  if (!account) return;
  if (const ArrayRef children = childrenProperty(*account)) {
    // Only what makes a record has an identifier to compare.
    const auto isRemoved = [&](const Value& info) {
      const DictionaryRef properties = info.dictionary();
      const auto child = properties ? BasicAccount::initWithProperties(properties) : nullptr;
      return child && child->identifier() == identifier;
    };
    std::vector<Value> remaining;
    std::ranges::remove_copy_if(*children, std::back_inserter(remaining), isRemoved);
    account->setAccountPropertyForKey(Array::make(std::move(remaining)), kAccountChildAccounts);
  }
  _state->loadChildrenFromAccount(account);
}

void AccountsManager::addChildToAccount(const std::shared_ptr<BasicAccount>& child,
                                        const std::shared_ptr<BasicAccount>& account) {
  // A dictionary in itself could be neither copied nor saved.
  if (!child || !account || child->properties() == account->properties()) return;
  const ArrayRef present = childrenProperty(*account);
  const ArrayRef children = present ? present->mutableCopy() : Array::make();
  children->append(child->properties());
  account->setAccountPropertyForKey(children, kAccountChildAccounts);
  _state->loadChildrenFromAccount(account);
}

}  // namespace tallbook
