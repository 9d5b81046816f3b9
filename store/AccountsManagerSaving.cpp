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
///
/// There is none for a record that shares its identifier with others: they are told apart by what
/// they held before they were changed, and one of the disk that still holds that has nothing to add
/// to what the store has.
class Counterparts {
 public:
  explicit Counterparts(const AccountTable& table) : _table(table) {}

  /// Notes which of the accounts share an identifier; none do where `table` holds them all.
  void noteShared(const AccountTable& table, const AccountsManager::AccountList& accounts) {
    if (table.size() == accounts.size()) return;
    IdentifierTable<bool> met;
    for (const auto& account : accounts) {
      const String identifier = account->identifier();
      if (identifier && std::exchange(met[identifier], true)) _shared[identifier] = true;
    }
  }

  /// Null where the disk holds none.
  DictionaryRef propertiesOf(const String& identifier) const {
    if (_shared.contains(identifier)) return nullptr;
    const auto* account = _table.find(identifier);
    return account ? (*account)->propertiesToSave() : nullptr;
  }

 private:
  const AccountTable& _table;
  IdentifierTable<bool> _shared;
};

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
  Counterparts onDisk(*onDiskStore->_topLevelAccountsByID);
  onDisk.noteShared(*onDiskStore->_topLevelAccountsByID, *onDiskStore->_orderedTopLevelAccounts);
  onDisk.noteShared(*_topLevelAccountsByID, *_orderedTopLevelAccounts);
  std::vector<Value> records;
  records.reserve(_orderedTopLevelAccounts->size());
  for (const auto& account : *_orderedTopLevelAccounts) {
    const DictionaryRef merged = mergeInMemoryPropertiesOriginalPropertiesOnDiskProperties(
        account->propertiesToSave(), account->originalProperties(),
        onDisk.propertiesOf(account->identifier()));
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
