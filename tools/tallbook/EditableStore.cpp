// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/EditableStore.h"

#include "tallbook/Vocabulary.h"

#include "tools/common/FileBytes.h"
#include "tools/common/Output.h"
#include "tools/common/Program.h"
#include "tools/tallbook/CreatorsCheck.h"
#include "tools/tallbook/FileDifferences.h"

namespace tallbook::tool {
namespace {

using Kind = AccountsFileState::Kind;

void requireUsable(const AccountsFile& file, const Options& options) {
  const bool isMalformed = file.state.kind == Kind::Malformed;
  if (!file.isUnusable() || (isMalformed && options.replaceUnreadable)) return;
  throw unusable(file,
                 "saving would put another file in its place; restore it from a copy, or repeat "
                 "the command with --replace-unreadable");
}

void waitForMigration(const Options& options) {
  // Where the lock cannot be made, there is no migration either.
  if (!options.waitsForMigration) return;
  static_cast<void>(AccountsManager::waitForMigrationToFinish(noteHolderOfMigrationLock));
}

}  // namespace

EditableStore::EditableStore(const Options& options) {
  waitForMigration(options);
  _file = readAccountsFile();
  requireUsable(_file, options);
  requireNoUpgradeAhead(_file, options);
  _store = AccountsManager::initWithAccountsFile(_file);
}

EditableStore EditableStore::again(const Options& options) const {
  waitForMigration(options);
  EditableStore fresh(*this);
  fresh._store = AccountsManager::initWithAccountsFile(_file);
  return fresh;
}

DictionaryRef EditableStore::accounts() const {
  const ArrayRef records = Array::make();
  for (const auto& record : *_store->allBasicAccounts()) records->append(record->properties());
  return Dictionary::make({{kPlistAccountsKey, records}})->frozenCopy();
}

void EditableStore::apply(const ArrayRef& wanted, bool prune) const {
  if (!wanted) {
    throw Failure(ExitCode::Unreadable,
                  "the text has no \"Accounts\"; give an empty array where none is wanted");
  }
  const AccountsManager::Applied applied = _store->applyAccounts(wanted, _file, prune);
  refuseBecause(applied.problem);
  if (applied.staying == 0) return;
  note("records that have no identifier or cannot be loaded stay: " +
       std::to_string(applied.staying));
}

void EditableStore::save(AccountsManager::KeepGeneration keep) const {
  SaveReceipt receipt;
  try {
    receipt = _store->saveChanges(keep);
  } catch (const InternalConsistencyFailure& failure) {
    // Listeners are told after the file was replaced.
    receipt.isSaved = true;
    noteUntold(failure);
  }
  if (!receipt.isSaved) {
    throw Failure(ExitCode::NotSaved, "the change is not saved: " + receipt.failure.text() +
                                          adviceOnRefusal(receipt.failure.error) + "; " +
                                          _file.path + " is as it was");
  }
  failFromHereOnWith(static_cast<int>(ExitCode::NotPrinted));
  if (_file.state.kind == Kind::Malformed) {
    note("the file that was no accounts file is kept beside the new one, as " +
         kAccountsFilename.str() + ".unreadable-N");
  }
  if (!receipt.generationFailure.empty()) note(receipt.generationFailure);
  for (const SaveClash& clash : receipt.clashes) note(_store->textOfClash(clash));
}

void EditableStore::showAndSave(const Options& options, const DictionaryRef& before) const {
  const AccountsFileDifferences changes = differencesBetween(before, accounts());
  printDifferences(changes, options.json);
  if (!changes.empty()) save(AccountsManager::KeepGeneration::Always);
}

void requireNoUpgradeAhead(const AccountsFile& file, const Options& options) {
  const Value version = file.topLevel ? (*file.topLevel)[kPlistVersionKey] : Value();
  if (!version.isNumber() || version.unsignedValue() >= AccountsManager::currentVersion()) return;
  if (options.givesUpUpgrade) return;
  throw Failure(ExitCode::Usage,
                file.path + " is of version " + std::to_string(version.integerValue()) +
                    "; once it is saved it reads as current and is never upgraded any more: run "
                    "tallbook-migrate first, or repeat the command with --give-up-upgrade");
}

void noteUntold(const InternalConsistencyFailure& failure) {
  note(std::string("the change is saved, but not everyone who listens could be told: ") +
       failure.what() + adviceOnFailure());
}

}  // namespace tallbook::tool
