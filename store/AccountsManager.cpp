// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsManager.h"

#include <algorithm>
#include <utility>

#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "store/AccountsManagerState.h"
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

AccountsManager::State::State() {
  runtimeFixers.push_back(std::make_unique<TBRuntimeFixMailAccount>());
}

AccountsManager::AccountsManager() : _state(std::make_unique<State>()) {}

AccountsManager::~AccountsManager() = default;

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
  store->_state->savesOfMigration = std::make_unique<SavesOfMigration>(std::move(file));
  return store;
}

std::shared_ptr<AccountsManager> AccountsManager::initWithAccountsFile(
    const AccountsFileContents& file) {
  auto store = _initWithAccountsInfo(file.records());
  store->_state->dataVersion = file.state.version;
  store->_state->fileState = file.state;
  store->_state->rememberSavedRecords();
  return store;
}

AccountsFileContents AccountsManager::readAccountsFile() {
  return AccountsFile::read().contents();
}

AccountsFileState AccountsManager::stateOfAccountsFile() {
  return readAccountsFile().state;
}

const AccountsFileState& AccountsManager::fileState() const noexcept {
  return _state->fileState;
}

std::uint64_t AccountsManager::dataVersion() const noexcept {
  return _state->dataVersion;
}

void AccountsManager::setDataVersion(std::uint64_t version) noexcept {
  _state->dataVersion = version;
}

const std::vector<RecordFault>& AccountsManager::droppedRecords() const noexcept {
  return _state->droppedRecords;
}

const std::vector<RecordFault>& AccountsManager::unloadableRecords() const noexcept {
  return _state->unloadableRecords;
}

std::shared_ptr<AccountsManager> AccountsManager::initWithAccounsInfoArray(const ArrayRef& infos) {
  return _initWithAccountsInfo(infos);
}

std::shared_ptr<AccountsManager> AccountsManager::_initWithAccountsInfo(const ArrayRef& infos) {
  std::shared_ptr<AccountsManager> store(new AccountsManager);
  if (infos) store->_state->loadAccounts(*infos);
  store->_state->setOriginalAccountDictionaries();
  return store;
}

void AccountsManager::State::loadAccounts(const Array& infos) {
  bool repaired = false;
  orderedTopLevelAccounts->reserve(infos.size());
  topLevelAccountsByID.reserve(infos.size());
  for (const Value& info : infos) {
    const DictionaryRef properties = info.dictionary();
    auto account = properties ? BasicAccount::initWithProperties(properties) : nullptr;
    if (!account) {
      logMessage("-[AccountsManager(Internal) _initWithAccountsInfo:]", [&] {
        return "ERROR: Failed to create a BasicAccount from " + info.description();
      });
      droppedRecords.push_back({info, BasicAccount::whyNoRecord(info)});
      continue;
    }
    const FixerVerdict verdict = offerToFixers(*account, "loading accounts", droppedRecords);
    repaired |= verdict != FixerVerdict::NothingToFix;
    if (verdict != FixerVerdict::CannotBeFixed) appendAccount(std::move(account));
  }
  if (!repaired) return;
  for (const auto& fixer : runtimeFixers) fixer->accountsHaveBeenSaved(false);
}

FixerVerdict AccountsManager::State::offerToFixers(BasicAccount& account, std::string_view occasion,
                                                   std::vector<RecordFault>& unfixable) {
  FixerVerdict worst = FixerVerdict::NothingToFix;
  for (const auto& fixer : runtimeFixers) {
    const FixerVerdict verdict = fixer->fixBasicAccountIfNeededLoggingMessage(account, occasion);
    if (verdict == FixerVerdict::CannotBeFixed) {
      unfixable.push_back({account.properties(), fixer->whyItCannotBeFixed(account)});
    }
    worst = std::max(worst, verdict);
  }
  return worst;
}

void AccountsManager::State::appendAccount(std::shared_ptr<BasicAccount> account) {
  if (const String identifier = account->identifier()) {
    topLevelAccountsByID[identifier] = account;
    fileChildren(account, identifier);
  }
  if (positions) positions->add(account.get(), orderedTopLevelAccounts->size());
  orderedTopLevelAccounts->push_back(std::move(account));
}

void AccountsManager::State::loadChildrenFromAccount(const std::shared_ptr<BasicAccount>& account) {
  if (const String identifier = account->identifier()) fileChildren(account, identifier);
}

void AccountsManager::State::fileChildren(const std::shared_ptr<BasicAccount>& account,
                                          const String& parentID) {
  removeChildrenForAccountWithIdentifier(parentID);
  const ArrayRef children = account->accountPropertyForKey(kAccountChildAccounts).array();
  if (!children) return;
  std::vector<String>& childIDs = childAccountIDsByParentAccountID[parentID];
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
    childAccountsByID[childID] = std::move(child);
    childAccountIDToParentAccountID[childID] = parentID;
  }
}

void AccountsManager::State::removeChildrenForAccountWithIdentifier(std::string_view identifier) {
  const std::vector<String>* childIDs = childAccountIDsByParentAccountID.find(identifier);
  if (!childIDs) return;
  for (const String& childID : *childIDs) {
    // A child filed under another parent since then is that parent's.
    const String* parentID = childAccountIDToParentAccountID.find(childID);
    if (!parentID || *parentID != identifier) continue;
    childAccountIDToParentAccountID.erase(childID);
    childAccountsByID.erase(childID);
  }
  childAccountIDsByParentAccountID.erase(identifier);
}

void AccountsManager::State::setOriginalAccountDictionaries() {
  originalAccountsByID = {};
  originalAccountsByID.reserve(orderedTopLevelAccounts->size());
  for (const auto& account : *orderedTopLevelAccounts) {
    if (const String identifier = account->identifier()) {
      originalAccountsByID.append(identifier, snapshotToSave(*account));
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
  if (const auto* account = _state->topLevelAccountsByID.find(identifier)) return *account;
  const auto* child = _state->childAccountsByID.find(identifier);
  if (!child) return nullptr;
  const String childID = (*child)->identifier();
  const String* parentID = _state->childAccountIDToParentAccountID.find(childID);
  const auto* parent = parentID ? _state->topLevelAccountsByID.find(*parentID) : nullptr;
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
  for (const auto& account : *_state->orderedTopLevelAccounts) {
    if (account->syncStoreIdentifier() == syncIdentifier) return account;
  }
  std::shared_ptr<BasicAccount> found;
  _state->childAccountsByID.forEach([&](const String&, const auto& child) {
    if (!found && child->syncStoreIdentifier() == syncIdentifier) found = child;
  });
  return found;
}

std::shared_ptr<const AccountsManager::AccountList> AccountsManager::allBasicAccounts() const {
  return _state->orderedTopLevelAccounts;
}

std::uint64_t AccountsManager::count() const noexcept {
  return _state->orderedTopLevelAccounts->size();
}

AccountsManager::AccountList AccountsManager::allBasicSyncableAccounts() const {
  AccountList accounts = *_state->orderedTopLevelAccounts;
  accounts.reserve(accounts.size() + _state->childAccountsByID.size());
  _state->childAccountsByID.forEach(
      [&](const String&, const auto& child) { accounts.push_back(child); });
  return accounts;
}

AccountsManager::AccountList AccountsManager::basicAccountsWithTypes(
    const AccountTypes& types) const {
  AccountList accounts;
  std::ranges::copy_if(*_state->orderedTopLevelAccounts, std::back_inserter(accounts),
                       [&](const auto& account) { return hasTypeAmong(*account, types); });
  return accounts;
}

std::uint64_t AccountsManager::countOfBasicAccountsWithTypes(const AccountTypes& types) const {
  return static_cast<std::uint64_t>(
      std::ranges::count_if(*_state->orderedTopLevelAccounts,
                            [&](const auto& account) { return hasTypeAmong(*account, types); }));
}

}  // namespace tallbook
