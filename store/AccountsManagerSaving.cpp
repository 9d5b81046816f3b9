#include <utility>

#include "tallbook/AccountsManager.h"

#include "model/LibraryLogging.h"
#include "store/AccountMerge.h"
#include "store/AccountsFile.h"
#include "store/IdentifierTable.h"
#include "store/Notifications.h"
#include "store/TBRuntimeFixProtocol.h"

namespace tallbook {
namespace {

constexpr std::string_view kSaving = "-[AccountsManager saveAllAccounts]";

std::string description(const DictionaryRef& dictionary) {
  return Value(dictionary).description();
}

}  // namespace

bool AccountsManager::saveAllAccounts() {
  logMessage(kSaving, [] { return std::string("Saving all accounts"); });
  const bool repaired = fixAccountsBeforeSaving();
  const bool replaced = AccountsFile::replace(mergedRecords());
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

std::vector<Value> AccountsManager::mergedRecords() const {
  const auto onDiskStore = initInsideOfMigration();
  std::vector<Value> records;
  records.reserve(_orderedTopLevelAccounts->size());
  for (const auto& account : *_orderedTopLevelAccounts) {
    const String identifier = account->identifier();
    const auto onDisk = identifier ? onDiskStore->accountWithIdentifier(identifier) : nullptr;
    const DictionaryRef merged = mergeInMemoryPropertiesOriginalPropertiesOnDiskProperties(
        account->propertiesToSave(), account->originalProperties(),
        onDisk ? onDisk->propertiesToSave() : nullptr);
    logMessage(kSaving, [&] {
      return "Calculated Properties - Type: " + account->type().str() +
             ", Properties: " + description(merged) +
             ", Dataclasses: " + Value(account->enabledDataclasses()).description();
    });
    records.emplace_back(merged);
  }
  return records;
}

DictionaryRef AccountsManager::mergeInMemoryPropertiesOriginalPropertiesOnDiskProperties(
    const DictionaryRef& inMemory, const DictionaryRef& original, const DictionaryRef& onDisk) {
  constexpr std::string_view kMerging =
      "-[AccountsManager mergeInMemoryProperties:originalProperties:onDiskProperties:]";
  logMessage(kMerging, [&] {
    return "Merging inmem " + description(inMemory) + " orig " + description(original) +
           " onDisk " + description(onDisk);
  });
  const DictionaryRef merged = mergedProperties(inMemory, original, onDisk);
  logMessage(kMerging, [&] { return "Merged to " + description(merged); });
  return merged;
}

}  // namespace tallbook
