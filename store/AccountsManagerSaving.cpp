// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <chrono>
#include <random>
#include <thread>
#include <utility>

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "model/LibraryLogging.h"
#include "store/AccountMerge.h"
#include "store/AccountsManagerState.h"
#include "store/AccountsMerge.h"
#include "store/Notifications.h"
#include "store/RecordDifferences.h"
#include "store/WatchedAccounts.h"

namespace tallbook {
namespace {

constexpr std::string_view kSaving = "-[AccountsManager saveAllAccounts]";
constexpr std::string_view kSavingChanges = "-[AccountsManager saveChanges]";

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

/// Clashes share what they hold with the records, which go on changing. What was written can be
/// copied.
void freeze(std::vector<SaveClash>& clashes) {
  for (SaveClash& clash : clashes) {
    clash.here = clash.here.frozenCopy();
    clash.elsewhere = clash.elsewhere.frozenCopy();
  }
}

/// Gives other savers a moment, a random one, so that those who got in each other's way do not do
/// so again and again. Nobody is waited for: a saver that is stopped meanwhile makes no difference.
void stepBack(unsigned lost) {
  using std::chrono::microseconds;
  constexpr microseconds kShortest{50};
  constexpr unsigned kMostDoublings = 10;
  const microseconds longest = kShortest * (1U << std::min(lost, kMostDoublings));
  std::random_device random;
  std::this_thread::sleep_for(
      microseconds(std::uniform_int_distribution<long>(0, longest.count())(random)));
}

/// What is no record stays in the file all the same.
void appendOthers(std::vector<Value>& merged, const ArrayRef& records) {
  for (const Value& record : records) {
    if (!record.dictionary()) merged.push_back(record);
  }
}

/// Whether the file has these records already, so that there is nothing to write.
bool isAsWanted(const AccountsFile& file, const std::vector<Value>& records) {
  const ArrayRef present = file.records();
  return file.state().kind == AccountsFileState::Kind::Whole && present &&
         file.state().version == AccountsManager::currentVersion() &&
         std::ranges::equal(records, present);
}

}  // namespace

bool AccountsManager::saveAllAccounts() {
  logMessage(kSaving, [] { return std::string("Saving all accounts"); });
  const bool repaired = _state->fixAccountsBeforeSaving();
  const bool replaced =
      _state->replaceFile(KeepGeneration::AtMostOnceAMinute,
                          [this](const AccountsFile& file) { return _state->mergedRecords(file); });
  _state->finishSave(repaired, replaced);
  return replaced;
}

SaveReceipt AccountsManager::saveChanges(KeepGeneration keep) {
  logMessage(kSavingChanges, [] { return std::string("Saving changes"); });
  const bool repaired = _state->fixAccountsBeforeSaving();
  SaveReceipt receipt;
  receipt.isSaved =
      _state->replaceFile(keep, [&](const AccountsFile& file) -> std::optional<std::vector<Value>> {
        ++receipt.attempts;
        const ArrayRef records = file.records();
        MergedAccounts merged =
            mergedAccounts(_state->savedRecords, _state->heldRecords(), dictionariesIn(records));
        receipt.clashes = std::move(merged.clashes);
        receipt.takenOver = std::move(merged.takenOver);
        appendOthers(merged.records, records);
        if (isAsWanted(file, merged.records)) return std::nullopt;
        return std::move(merged.records);
      });
  receipt.failure = _state->saveFailure;
  receipt.generationFailure = _state->generationFailure;
  if (receipt.isSaved) freeze(receipt.clashes);
  _state->finishSave(repaired, receipt.isSaved);
  return receipt;
}

const SaveFailure& AccountsManager::saveFailure() const noexcept {
  return _state->saveFailure;
}

bool AccountsManager::State::replaceFile(KeepGeneration keep, const MakeRecords& makeRecords) {
  using Cause = Generations::Cause;
  saveFailure = {};
  generationFailure.clear();
  if (fileState.kind == AccountsFileState::Kind::Unreadable) {
    saveFailure = {"replace the accounts file, which could not be read when this store was made",
                   fileState.reason, fileState.error};
    logMessage(kSaving, [] { return std::string("Failed to save accounts to filesystem."); });
    return false;
  }
  // Somebody else's save may land between the look at the file and its replacement; then there is
  // another file to merge with. Each further round means that another save succeeded.
  Replacement replacement = Replacement::NotTheFileRead;
  for (unsigned lost = 0; replacement == Replacement::NotTheFileRead; ++lost) {
    if (lost > 0) stepBack(lost);
    const AccountsFile file = AccountsFile::read();
    // There is nothing to merge with a file that cannot be read; trying to replace it says why.
    const bool isReadable = file.state().kind != AccountsFileState::Kind::Unreadable;
    std::optional<std::vector<Value>> records(std::in_place);
    if (isReadable) records = makeRecords(file);
    if (!records) return true;
    std::optional<Cause> cause = keep == KeepGeneration::Always ? Cause::Restore : Cause::Save;
    std::vector<Value> ofMigration;
    if (savesOfMigration) {
      ofMigration = *records;
      cause = savesOfMigration->causeToKeep(file);
    }
    const ArrayRef written = leftOutOf.empty() ? nullptr : Array::make(*records);
    AccountsFileSave save = file.replace(*std::move(records), cause);
    replacement = save.end;
    if (replacement == Replacement::Done) leaveOutOfWatchers(file.records(), written);
    if (savesOfMigration && replacement == Replacement::Done) {
      savesOfMigration->known = save.version;
      savesOfMigration->records = std::move(ofMigration);
    }
    saveFailure = std::move(save.failure);
    generationFailure = std::move(save.generationFailure);
  }
  return replacement == Replacement::Done;
}

void AccountsManager::State::leaveOutOfWatchers(const ArrayRef& before, const ArrayRef& after) {
  std::erase_if(leftOutOf, [&](const std::weak_ptr<WatchedAccounts>& watched) {
    const auto accounts = watched.lock();
    if (accounts) accounts->leaveOut(dictionariesIn(before), dictionariesIn(after));
    return !accounts;
  });
}

void AccountsManager::State::finishSave(bool repaired, bool replaced) {
  if (replaced) {
    for (const auto& account : *orderedTopLevelAccounts) {
      account->setOriginalProperties(account->propertiesToSave());
    }
    rememberSavedRecords();
  }
  if (repaired) {
    for (const auto& fixer : runtimeFixers) fixer->accountsHaveBeenSaved(true);
  }
  if (replaced && !Notifications::areSkipped()) {
    sendNotificationsForChangedAccounts();
    setOriginalAccountDictionaries();
  }
}

void AccountsManager::State::rememberSavedRecords() {
  savedRecords.clear();
  savedRecords.reserve(orderedTopLevelAccounts->size());
  for (const auto& account : *orderedTopLevelAccounts) {
    // Null where a client has cleared it: then nothing is known of what was saved.
    if (account->originalProperties()) savedRecords.push_back(account->originalProperties());
  }
}

std::vector<HeldRecord> AccountsManager::State::heldRecords() const {
  std::vector<HeldRecord> held;
  held.reserve(orderedTopLevelAccounts->size());
  for (const auto& account : *orderedTopLevelAccounts) {
    held.push_back({account->propertiesToSave(), account->originalProperties()});
  }
  return held;
}

bool AccountsManager::State::fixAccountsBeforeSaving() {
  bool repaired = false;
  unloadableRecords.clear();
  for (auto account = orderedTopLevelAccounts->rbegin(); account != orderedTopLevelAccounts->rend();
       ++account) {
    const FixerVerdict verdict = offerToFixers(**account, "saving accounts", unloadableRecords);
    repaired |= verdict != FixerVerdict::NothingToFix;
    if (verdict != FixerVerdict::CannotBeFixed) continue;
    // Still written, so that nothing is lost, but no longer found and reported as removed.
    if (const String identifier = (*account)->identifier()) {
      removeChildrenForAccountWithIdentifier(identifier);
      topLevelAccountsByID.erase(identifier);
    }
  }
  return repaired;
}

std::vector<Value> AccountsManager::State::mergedRecords(const AccountsFile& file) const {
  const auto onDiskStore = initWithAccountsFile(file.contents());
  const State& stateOnDisk = *onDiskStore->_state;
  Counterparts onDisk(stateOnDisk.topLevelAccountsByID);
  onDisk.noteShared(stateOnDisk.topLevelAccountsByID, *stateOnDisk.orderedTopLevelAccounts);
  onDisk.noteShared(topLevelAccountsByID, *orderedTopLevelAccounts);
  std::vector<Value> records;
  records.reserve(orderedTopLevelAccounts->size());
  for (const auto& account : *orderedTopLevelAccounts) {
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
