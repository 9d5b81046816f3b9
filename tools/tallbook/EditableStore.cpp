#include "tools/tallbook/EditableStore.h"

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"

namespace tallbook::tool {
namespace {

void warnOfOldVersion(const AccountsFile& file) {
  const Value version = file.content ? (*file.content)[kPlistVersionKey] : Value();
  if (!version.isNumber() || version.unsignedValue() >= AccountsManager::currentVersion()) return;
  note("the accounts file is of version " + std::to_string(version.integerValue()) +
       "; once it is saved it reads as current, and its upgrade does not run any more: better run "
       "tallbook-migrate first");
}

}  // namespace

EditableStore::EditableStore(const Options& options) : _file(readAccountsFile()) {
  if (_file.state == AccountsFile::State::Unreadable && !options.replaceUnreadable) {
    throw unreadable(_file,
                     "saving would lose every account in it; restore it from a copy, or repeat "
                     "the command with --replace-unreadable");
  }
  warnOfOldVersion(_file);
  const ArrayRef records = _file.records();
  _store = AccountsManager::initWithAccounsInfoArray(records);
  if (records && records->size() > _store->count()) {
    note(std::to_string(records->size() - _store->count()) +
         " of the file's records cannot be loaded and leave it with the next save; "
         "\"tallbook check\" names them");
  }
}

void EditableStore::take(const std::shared_ptr<BasicAccount>& record) const {
  const std::shared_ptr<BasicAccount> parent = record->parentAccount();
  if (!parent) {
    _store->updateAccount(record);
    return;
  }
  const ArrayRef children =
      parent->accountPropertyForKey(kAccountChildAccounts).array()->mutableCopy();
  // Of two children with one identifier the later one is the record that look-ups give.
  for (std::size_t index = children->size(); index-- > 0;) {
    const DictionaryRef child = (*children)[index].dictionary();
    if (child && (*child)[kAccountIdentifier].string() == record->identifier()) {
      children->replace(index, record->properties());
      break;
    }
  }
  parent->setAccountPropertyForKey(children, kAccountChildAccounts);
  _store->updateAccount(parent);
}

void EditableStore::save() const {
  if (_file.state == AccountsFile::State::Unreadable) keepCopyOf(_file);
  bool replaced = false;
  try {
    replaced = _store->saveAllAccounts();
  } catch (const InternalConsistencyFailure& failure) {
    note(std::string("the change is saved, but not everyone who listens could be told: ") +
         failure.what());
    return;
  }
  if (!replaced) {
    throw Failure(ExitCode::NotSaved, _file.path +
                                          " could not be replaced and is as it was; repeat the "
                                          "command with --verbose to see why");
  }
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
