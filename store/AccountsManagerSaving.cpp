#include <utility>

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "model/LibraryLogging.h"
#include "store/AccountMerge.h"
#include "store/AccountsFile.h"
#include "store/IdentifierTable.h"
#include "store/Notifications.h"
#include "store/TBRuntimeFixProtocol.h"

namespace tallbook {
namespace {

constexpr std::string_view kSaving = "-[AccountsManager saveAllAccounts]";

using AccountTable = IdentifierTable<std::shared_ptr<BasicAccount>>;

/// The top-level records on the disk that a store's records are merged with.
class Counterparts {
 public:
  /// `areUnique` when neither side has two records with one identifier.
  Counterparts(const AccountTable& table, const AccountsManager::AccountList& accounts,
               bool areUnique)
      : _table(table), _areUnique(areUnique) {
    if (areUnique) return;
    for (const auto& account : accounts) {
      if (const String identifier = account->identifier()) {
        _twins[identifier].accounts.push_back(account);
      }
    }
  }

  /// What the disk holds for the store's next record of that identifier, null when it holds none.
  DictionaryRef propertiesOfNext(const String& identifier) {
    if (!identifier) return nullptr;
    if (!_areUnique) return _twins[identifier].next();
    const auto* account = _table.find(identifier);
    return account ? (*account)->propertiesToSave() : nullptr;
  }

 private:
  /// Records with one identifier, as a damaged file may have them: the first belongs to the
  /// store's first, the second to its second, so that each keeps what is its own.
  struct Twins {
    AccountsManager::AccountList accounts;
    std::size_t met = 0;

    DictionaryRef next() {
      return met < accounts.size() ? accounts[met++]->propertiesToSave() : nullptr;
    }
  };

  const AccountTable& _table;
  const bool _areUnique;
  IdentifierTable<Twins> _twins;
};

bool areUnique(const AccountTable& table, const AccountsManager::AccountList& accounts) {
  return table.size() == accounts.size();
}

}  // namespace

bool AccountsManager::saveAllAccounts() {
  logMessage(kSaving, [] { return std::string("Saving all accounts"); });
  const bool repaired = fixAccountsBeforeSaving();
  const bool replaced = replaceFile();
  if (replaced) {
    for (const auto& account : *_orderedTopLevelAccounts) {
      account->setOriginalProperties(account->propertiesToSave());
    }
  }
  if (repaired) {
    for (const auto& fixer : _runtimeFixers) fixer->accountsHaveBeenSaved(true);
  }
  if (replaced && !Notifications::areSkipped()) {
    _sendNotificationsForChangedAccounts();
    _setOriginalAccountDictionaries();
  }
  return replaced;
}

bool AccountsManager::replaceFile() {
  if (_fileState.kind == AccountsFileState::Kind::Unreadable) {
    _saveFailure = {"replace the accounts file, which could not be read when this store was made",
                    _fileState.reason, _fileState.error};
    logMessage(kSaving, [] { return std::string("Failed to save accounts to filesystem."); });
    return false;
  }
  // Somebody else's save may land between the look at the file and its replacement; then there is
  // another file to merge with. Each further round means that another save succeeded.
  Replacement replacement;
  do {
    const AccountsFile file = AccountsFile::read();
    replacement = file.replace(mergedRecords(file), _saveFailure);
  } while (replacement == Replacement::NotTheFileRead);
  return replacement == Replacement::Done;
}

bool AccountsManager::fixAccountsBeforeSaving() {
  bool repaired = false;
  for (auto account = _orderedTopLevelAccounts->rbegin();
       account != _orderedTopLevelAccounts->rend(); ++account) {
    const FixerVerdict verdict = offerToFixers(**account, "saving accounts");
    repaired |= verdict != FixerVerdict::NothingToFix;
    if (verdict != FixerVerdict::CannotBeFixed) continue;
    // Still written, so that nothing is lost, but no longer found and reported as removed.
    if (const String identifier = (*account)->identifier()) {
      _removeChildrenForAccountWithIdentifier(identifier);
      _topLevelAccountsByID->erase(identifier);
    }
  }
  return repaired;
}

std::vector<Value> AccountsManager::mergedRecords(const AccountsFile& file) const {
  const auto onDiskStore = storeOf(file);
  const AccountTable& onDiskTable = *onDiskStore->_topLevelAccountsByID;
  const AccountList& onDiskAccounts = *onDiskStore->_orderedTopLevelAccounts;
  Counterparts onDisk(onDiskTable, onDiskAccounts,
                      areUnique(onDiskTable, onDiskAccounts) &&
                          areUnique(*_topLevelAccountsByID, *_orderedTopLevelAccounts));
  std::vector<Value> records;
  records.reserve(_orderedTopLevelAccounts->size());
  for (const auto& account : *_orderedTopLevelAccounts) {
    const DictionaryRef merged = mergeInMemoryPropertiesOriginalPropertiesOnDiskProperties(
        account->propertiesToSave(), account->originalProperties(),
        onDisk.propertiesOfNext(account->identifier()));
    logMessage(kSaving, [&] {
      return "Calculated Properties - Type: " + std::string(shown(account->type())) +
             ", Properties: " + shown(merged) +
             ", Dataclasses: " + shown(account->enabledDataclasses());
    });
    records.emplace_back(merged);
  }
  return records;
}

DictionaryRef AccountsManager::mergeInMemoryPropertiesOriginalPropertiesOnDiskProperties(
    const DictionaryRef& inMemory, const DictionaryRef& original, const DictionaryRef& onDisk) {
  constexpr std::string_view kMerging =
      "-[AccountsManager mergeInMemoryProperties:originalProperties:onDiskProperties:]";
  if (!inMemory) throw InternalConsistencyFailure("There are no properties to merge");
  logMessage(kMerging, [&] {
    return "Merging inmem " + shown(inMemory) + " orig " + shown(original) + " onDisk " +
           shown(onDisk);
  });
  const DictionaryRef merged = mergedProperties(inMemory, original, onDisk);
  logMessage(kMerging, [&] { return "Merged to " + shown(merged); });
  return merged;
}

}  // namespace tallbook
