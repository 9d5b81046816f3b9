#include <algorithm>
#include <unordered_set>
#include <utility>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "store/IdentifierTable.h"
#include "store/TBRuntimeFixProtocol.h"

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
  for (auto& stored : *_orderedTopLevelAccounts) {
    if (stored->identifier() != identifier) continue;
    stored = account;
    (*_topLevelAccountsByID)[identifier] = account;
    _loadChildrenFromAccount(account);
  }
}

void AccountsManager::insertAccount(const std::shared_ptr<BasicAccount>& account) {
  if (!account) return;
  logMutation("-[AccountsManager insertAccount:]", "Inserting", *account);
  const String identifier = account->identifier();
  if (identifier && _topLevelAccountsByID->contains(identifier)) return;
  appendAccount(account);
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
    _removeChildrenForAccountWithIdentifier(identifier);
    _topLevelAccountsByID->erase(identifier);
    ++left[identifier];
  }
  // Of several records with one identifier the last one goes first.
  std::unordered_set<std::shared_ptr<BasicAccount>> deleted;
  AccountList& stored = *_orderedTopLevelAccounts;
  for (auto account = stored.rbegin(); account != stored.rend(); ++account) {
    std::size_t* wanted = left.find((*account)->identifier());
    if (wanted && *wanted > 0 && deleted.insert(*account).second) --*wanted;
  }
  std::erase_if(stored, [&](const auto& account) { return deleted.contains(account); });
}

void AccountsManager::deleteAccountWithIdentifier(std::string_view identifier) {
  const auto* found = _topLevelAccountsByID->find(identifier);
  if (!found) return;
  const std::shared_ptr<BasicAccount> account = *found;
  deleteAccount(account);
}

std::size_t AccountsManager::positionOf(const std::shared_ptr<BasicAccount>& account) const {
  const AccountList& accounts = *_orderedTopLevelAccounts;
  const auto start =
      accounts.begin() + static_cast<std::ptrdiff_t>(std::min(_lastReplaced, accounts.size()));
  auto found = std::find(start, accounts.end(), account);
  if (found == accounts.end()) {
    found = std::find(accounts.begin(), start, account);
    if (found == start) return accounts.size();
  }
  return static_cast<std::size_t>(found - accounts.begin());
}

void AccountsManager::replaceAccountWithAccount(const std::shared_ptr<BasicAccount>& account,
                                                const std::shared_ptr<BasicAccount>& withAccount) {
  if (!withAccount) return;
  const std::size_t position = positionOf(account);
  if (position == _orderedTopLevelAccounts->size()) return;
  _lastReplaced = position;
  // A list handed out earlier keeps showing the store as it was; without one, none is copied.
  if (_orderedTopLevelAccounts.use_count() > 1) {
    _orderedTopLevelAccounts = std::make_shared<AccountList>(*_orderedTopLevelAccounts);
  }
  if (const String identifier = account->identifier()) {
    _removeChildrenForAccountWithIdentifier(identifier);
    _topLevelAccountsByID->erase(identifier);
  }
  if (const String identifier = withAccount->identifier()) {
    (*_topLevelAccountsByID)[identifier] = withAccount;
  }
  (*_orderedTopLevelAccounts)[position] = withAccount;
  _loadChildrenFromAccount(withAccount);
}

void AccountsManager::replaceAccountsWithTypesWithAccounts(const AccountTypes& types,
                                                           const AccountList& accounts) {
  logMessage("-[AccountsManager replaceAccountsWithTypes:withAccounts:]",
             [] { return std::string("Replacing accounts"); });
  AccountTable givenByID;
  for (const auto& given : accounts) {
    if (const String identifier = given ? given->identifier() : nullptr) {
      givenByID[identifier] = given;
    }
  }
  auto newTable = std::make_unique<AccountTable>();
  newTable->reserve(_orderedTopLevelAccounts->size());
  std::unordered_set<const BasicAccount*> placed;

  // From the last record to the first, so that of two with one identifier the first one counts;
  // the kept ones are collected backwards.
  auto newList = std::make_shared<AccountList>();
  newList->reserve(_orderedTopLevelAccounts->size());
  for (auto stored = _orderedTopLevelAccounts->rbegin(); stored != _orderedTopLevelAccounts->rend();
       ++stored) {
    const String identifier = (*stored)->identifier();
    const auto* given = identifier ? givenByID.find(identifier) : nullptr;
    std::shared_ptr<BasicAccount> kept = *stored;
    if (given) {
      kept = *given;
      placed.insert(kept.get());
      _loadChildrenFromAccount(kept);
    } else if (std::ranges::find(types, kept->type()) != types.end()) {
      if (identifier) _removeChildrenForAccountWithIdentifier(identifier);
      continue;
    }
    if (identifier) (*newTable)[identifier] = kept;
    newList->push_back(std::move(kept));
  }
  std::ranges::reverse(*newList);

  for (const auto& given : accounts) {
    if (!given || placed.contains(given.get())) continue;
    if (given->parentAccount()) {
      moveChild(given, *newTable);
      continue;
    }
    newList->push_back(given);
    if (const String identifier = given->identifier()) {
      (*newTable)[identifier] = given;
    }
    _loadChildrenFromAccount(given);
  }
  _orderedTopLevelAccounts = std::move(newList);
  _topLevelAccountsByID = std::move(newTable);
}

void AccountsManager::moveChild(const std::shared_ptr<BasicAccount>& child,
                                const AccountTable& parents) {
  const String childID = child->identifier();
  const auto* found = parents.find(child->parentAccountIdentifier());
  const auto newParent = found ? *found : nullptr;
  if (const String* filedUnder = _childAccountIDToParentAccountID->find(childID)) {
    const auto oldParent = newParent && *filedUnder == newParent->identifier()
                               ? newParent
                               : accountWithIdentifier(*filedUnder);
    if (oldParent) removeChildWithIdentifierFromAccount(childID, oldParent);
  }
  if (newParent) addChildToAccount(child, newParent);
}

void AccountsManager::removeChildWithIdentifierFromAccount(
    std::string_view identifier, const std::shared_ptr<BasicAccount>& account) {
  if (!account) return;
  const ArrayRef children = childrenProperty(*account);
  if (!children) return;
  const ArrayRef remaining = children->mutableCopy();
  for (const Value& info : *children) {
    // Only what makes a record has an identifier to compare.
    const DictionaryRef properties = info.dictionary();
    const auto child = properties ? BasicAccount::initWithProperties(properties) : nullptr;
    if (child && child->identifier() == identifier) remaining->removeAllEqual(info);
  }
  account->setAccountPropertyForKey(remaining, kAccountChildAccounts);
  _loadChildrenFromAccount(account);
}

void AccountsManager::addChildToAccount(const std::shared_ptr<BasicAccount>& child,
                                        const std::shared_ptr<BasicAccount>& account) {
  // A dictionary in itself could be neither copied nor saved.
  if (!child || !account || child->properties() == account->properties()) return;
  const ArrayRef present = childrenProperty(*account);
  const ArrayRef children = present ? present->mutableCopy() : Array::make();
  children->append(child->properties());
  account->setAccountPropertyForKey(children, kAccountChildAccounts);
  _loadChildrenFromAccount(account);
}

}  // namespace tallbook
