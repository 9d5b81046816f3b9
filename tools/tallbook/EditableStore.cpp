#include "tools/tallbook/EditableStore.h"

#include "tallbook/Vocabulary.h"

#include "tools/common/FileBytes.h"
#include "tools/common/Output.h"
#include "tools/common/Program.h"
#include "tools/tallbook/ClashText.h"
#include "tools/tallbook/CreatorsCheck.h"
#include "tools/tallbook/Records.h"

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

void EditableStore::take(const std::shared_ptr<BasicAccount>& record) const {
  const std::shared_ptr<BasicAccount> parent = record->parentAccount();
  if (!parent) {
    _store->replaceAccountWithAccount(record, record);
    return;
  }
  const ArrayRef children =
      parent->accountPropertyForKey(kAccountChildAccounts).array()->mutableCopy();
  // One that the file has no identifier for is found by all that the file has of it.
  const bool isIdentified = !storedIdentifier(*record).empty();
  // Of two children with one identifier the later one is the record that look-ups give.
  for (std::size_t index = children->size(); index-- > 0;) {
    const DictionaryRef child = (*children)[index].dictionary();
    if (!child) continue;
    if (isIdentified ? (*child)[kAccountIdentifier].string() == record->identifier()
                     : Value(child) == Value(record->originalProperties())) {
      children->replace(index, record->properties());
      break;
    }
  }
  parent->setAccountPropertyForKey(children, kAccountChildAccounts);
  _store->replaceAccountWithAccount(parent, parent);
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
  for (const SaveClash& clash : receipt.clashes) note(textOfClash(clash, *_store));
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

void requireRoomFor(const String& type, const AccountsManager& store) {
  if (type != kOnMyDeviceAccountType || store.countOfBasicAccountsWithTypes({type}) == 0) return;
  throw Failure(ExitCode::Usage, "the device has its on-device account already, and only one");
}

void requireLoadable(const DictionaryRef& properties) {
  if (AccountsManager::initWithAccounsInfoArray(Array::make({properties}))->count() == 1) return;
  throw Failure(ExitCode::Usage, "the next load would drop an account of the type \"" +
                                     (*properties)[kAccountType].string().str() +
                                     "\" with the class \"" +
                                     (*properties)[kAccountClass].string().str() +
                                     "\"; give a class that the type has");
}

}  // namespace tallbook::tool
