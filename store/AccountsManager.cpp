#include "tallbook/AccountsManager.h"

#include <algorithm>
#include <utility>

#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "store/AccountPositions.h"
#include "store/AccountsFile.h"
#include "store/IdentifierTable.h"
#include "store/SavesOfMigration.h"
#include "store/TBRuntimeFixMailAccount.h"

namespace tallbook {
namespace {

bool hasTypeAmong(const BasicAccount& account, const AccountsManager::AccountTypes& types) {
  return std::ranges::find(types, account.type()) != types.end();
}

/// A frozen copy of what would be saved of the record. Most records are as they were read, and
/// then their original properties are that copy.
DictionaryRef snapshotToSave(const BasicAccount& account) {
  const DictionaryRef current = account.propertiesToSave();
  const DictionaryRef& original = account.originalProperties();
  return original && current->sharesStorageWith(*original) ? original : current->frozenCopy();
}

}  // namespace

AccountsManager::AccountsManager()
    : _topLevelAccountsByID(std::make_unique<AccountTable>()),
      _orderedTopLevelAccounts(std::make_shared<AccountList>()),
      _childAccountsByID(std::make_unique<AccountTable>()),
      _childAccountIDToParentAccountID(std::make_unique<IdentifierTable<String>>()),
      _childAccountIDsByParentAccountID(std::make_unique<IdentifierTable<std::vector<String>>>()),
      _originalAccountsByID(std::make_unique<IdentifierTable<DictionaryRef>>()),
      _runtimeFixers(_createRuntimeFixers()) {}

AccountsManager::~AccountsManager() = default;

std::vector<std::unique_ptr<TBRuntimeFixProtocol>> AccountsManager::_createRuntimeFixers() {
  std::vector<std::unique_ptr<TBRuntimeFixProtocol>> fixers;
  fixers.push_back(std::make_unique<TBRuntimeFixMailAccount>());
  return fixers;
}

std::uint64_t AccountsManager::currentVersion() noexcept {
  return 12;
}

std::string AccountsManager::fullPathToTallbookPlist() {
  return AccountsFile::path();
}

std::shared_ptr<AccountsManager> AccountsManager::init() {
  return initWithAccountsFile(readAccountsFile());
}

std::shared_ptr<AccountsManager> AccountsManager::initInsideOfMigration() {
  AccountsFile file = AccountsFile::read();
  auto store = initWithAccountsFile(file.contents());
  store->_savesOfMigration = std::make_unique<SavesOfMigration>(std::move(file));
  return store;
}

std::shared_ptr<AccountsManager> AccountsManager::initWithAccountsFile(
    const AccountsFileContents& file) {
  auto store = _initWithAccountsInfo(file.records());
  store->_dataVersion = file.state.version;
  store->_fileState = file.state;
  store->rememberSavedRecords();
  return store;
}

AccountsFileContents AccountsManager::readAccountsFile() {
  return AccountsFile::read().contents();
}

AccountsFileState AccountsManager::stateOfAccountsFile() {
  return readAccountsFile().state;
}

std::shared_ptr<AccountsManager> AccountsManager::initWithAccounsInfoArray(const ArrayRef& infos) {
  return _initWithAccountsInfo(infos);
}

std::shared_ptr<AccountsManager> AccountsManager::_initWithAccountsInfo(const ArrayRef& infos) {
  std::shared_ptr<AccountsManager> store(new AccountsManager);
  if (infos) store->loadAccounts(*infos);
  store->_setOriginalAccountDictionaries();
  return store;
}

void AccountsManager::loadAccounts(const Array& infos) {
  bool repaired = false;
  _orderedTopLevelAccounts->reserve(infos.size());
  _topLevelAccountsByID->reserve(infos.size());
  for (const Value& info : infos) {
    const DictionaryRef properties = info.dictionary();
    auto account = properties ? BasicAccount::initWithProperties(properties) : nullptr;
    if (!account) {
      logMessage("-[AccountsManager(Internal) _initWithAccountsInfo:]", [&] {
        return "ERROR: Failed to create a BasicAccount from " + info.description();
      });
      _droppedRecords.push_back({info, BasicAccount::whyNoRecord(info)});
      continue;
    }
    const FixerVerdict verdict = offerToFixers(*account, "loading accounts", _droppedRecords);
    repaired |= verdict != FixerVerdict::NothingToFix;
    if (verdict != FixerVerdict::CannotBeFixed) appendAccount(std::move(account));
  }
  if (!repaired) return;
  for (const auto& fixer : _runtimeFixers) fixer->accountsHaveBeenSaved(false);
}

FixerVerdict AccountsManager::offerToFixers(BasicAccount& account, std::string_view occasion,
                                            std::vector<RecordFault>& unfixable) {
  FixerVerdict worst = FixerVerdict::NothingToFix;
  for (const auto& fixer : _runtimeFixers) {
    const FixerVerdict verdict = fixer->fixBasicAccountIfNeededLoggingMessage(account, occasion);
    if (verdict == FixerVerdict::CannotBeFixed) {
      unfixable.push_back({account.properties(), fixer->whyItCannotBeFixed(account)});
    }
    worst = std::max(worst, verdict);
  }
  return worst;
}

void AccountsManager::appendAccount(std::shared_ptr<BasicAccount> account) {
  if (const String identifier = account->identifier()) {
    (*_topLevelAccountsByID)[identifier] = account;
    fileChildren(account, identifier);
  }
  if (_positions) _positions->add(account.get(), _orderedTopLevelAccounts->size());
  _orderedTopLevelAccounts->push_back(std::move(account));
}

void AccountsManager::_loadChildrenFromAccount(const std::shared_ptr<BasicAccount>& account) {
  if (const String identifier = account->identifier()) fileChildren(account, identifier);
}

void AccountsManager::fileChildren(const std::shared_ptr<BasicAccount>& account,
                                   const String& parentID) {
  _removeChildrenForAccountWithIdentifier(parentID);
  const ArrayRef children = account->accountPropertyForKey(kAccountChildAccounts).array();
  if (!children) return;
  std::vector<String>& childIDs = (*_childAccountIDsByParentAccountID)[parentID];
  childIDs.reserve(children->size());
  for (const Value& info : *children) {
    const DictionaryRef properties = info.dictionary();
    auto child = properties ? BasicAccount::initWithProperties(properties) : nullptr;
    if (child) child->setParentAccount(account);
    const String childID = child ? child->identifier() : nullptr;
    if (!childID) {
      logMessage("-[AccountsManager(Internal) _loadChildrenFromAccount:]", [&] {
        return "Ignoring unknown child account with properties " + info.description();
      });
      continue;
    }
    childIDs.push_back(childID);
    (*_childAccountsByID)[childID] = std::move(child);
    (*_childAccountIDToParentAccountID)[childID] = parentID;
  }
}

void AccountsManager::_removeChildrenForAccountWithIdentifier(std::string_view identifier) {
  const std::vector<String>* childIDs = _childAccountIDsByParentAccountID->find(identifier);
  if (!childIDs) return;
  for (const String& childID : *childIDs) {
    // A child filed under another parent since then is that parent's.
    const String* parentID = _childAccountIDToParentAccountID->find(childID);
    if (!parentID || *parentID != identifier) continue;
    _childAccountIDToParentAccountID->erase(childID);
    _childAccountsByID->erase(childID);
  }
  _childAccountIDsByParentAccountID->erase(identifier);
}

void AccountsManager::_setOriginalAccountDictionaries() {
  _originalAccountsByID = std::make_unique<IdentifierTable<DictionaryRef>>();
  _originalAccountsByID->reserve(_orderedTopLevelAccounts->size());
  for (const auto& account : *_orderedTopLevelAccounts) {
    if (const String identifier = account->identifier()) {
      _originalAccountsByID->append(identifier, snapshotToSave(*account));
      continue;
    }
    logMessage("-[AccountsManager(Internal) _setOriginalAccountDictionaries]", [&] {
      return Value(account->properties()).description() +
             " returned a nil identifier. Account properties may not get saved";
    });
  }
}

std::shared_ptr<BasicAccount> AccountsManager::accountWithIdentifier(
    std::string_view identifier) const {
  if (const auto* account = _topLevelAccountsByID->find(identifier)) return *account;
  const auto* child = _childAccountsByID->find(identifier);
  if (!child) return nullptr;
  const String childID = (*child)->identifier();
  const String* parentID = _childAccountIDToParentAccountID->find(childID);
  const auto* parent = parentID ? _topLevelAccountsByID->find(*parentID) : nullptr;
  return parent ? *parent : nullptr;
}

std::shared_ptr<BasicAccount> AccountsManager::displayAccountWithSyncIdentifier(
    std::string_view syncIdentifier) const {
  const auto account = syncableAccountWithSyncIdentifier(syncIdentifier);
  const String identifier = account ? account->identifier() : nullptr;
  return identifier ? accountWithIdentifier(identifier) : nullptr;
}

std::shared_ptr<BasicAccount> AccountsManager::syncableAccountWithSyncIdentifier(
    std::string_view syncIdentifier) const {
  for (const auto& account : *_orderedTopLevelAccounts) {
    if (account->syncStoreIdentifier() == syncIdentifier) return account;
  }
  std::shared_ptr<BasicAccount> found;
  _childAccountsByID->forEach([&](const String&, const auto& child) {
    if (!found && child->syncStoreIdentifier() == syncIdentifier) found = child;
  });
  return found;
}

AccountsManager::AccountList AccountsManager::allBasicSyncableAccounts() const {
  AccountList accounts = *_orderedTopLevelAccounts;
  accounts.reserve(accounts.size() + _childAccountsByID->size());
  _childAccountsByID->forEach([&](const String&, const auto& child) { accounts.push_back(child); });
  return accounts;
}

AccountsManager::AccountList AccountsManager::basicAccountsWithTypes(
    const AccountTypes& types) const {
  AccountList accounts;
  std::ranges::copy_if(*_orderedTopLevelAccounts, std::back_inserter(accounts),
                       [&](const auto& account) { return hasTypeAmong(*account, types); });
  return accounts;
}

std::uint64_t AccountsManager::countOfBasicAccountsWithTypes(const AccountTypes& types) const {
  return static_cast<std::uint64_t>(
      std::ranges::count_if(*_orderedTopLevelAccounts,
                            [&](const auto& account) { return hasTypeAmong(*account, types); }));
}

}  // namespace tallbook
