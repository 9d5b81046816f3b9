#include <iostream>

#include "tallbook/AccountsManager.h"
#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Dataclasses.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/Explanation.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

/// Whether the record's own list turns the dataclass on.
bool isStoredAsEnabled(const BasicAccount& record, const String& dataclass) {
  const ArrayRef enabled = (*record.properties())[kAccountEnabledDataclasses].array();
  return enabled && enabled->contains(dataclass.view());
}

std::shared_ptr<BasicAccount> newRecord(const AccountsManager& store, const std::string& type,
                                        const std::string& className) {
  if (type != kOnMyDeviceAccountType.view()) {
    return BasicAccount::accountWithTypeClass(type, className);
  }
  if (store.countOfBasicAccountsWithTypes({kOnMyDeviceAccountType}) > 0) {
    throw Failure(ExitCode::Usage, "the device has its on-device account already, and only one");
  }
  return BasicAccount::initWithProperties(DeviceLocalAccount::basicAccountProperties(className));
}

}  // namespace

ExitCode setEnabled(const Options& options, const std::string& identifier,
                    const std::string& dataclass, bool enabled) {
  const String full = dataclassNamed(dataclass);
  const EditableStore store(options);
  const auto record = recordNamed(*store, identifier);
  const bool isSupported = record->supportedDataclasses()->contains(full.view());
  if (!isSupported && enabled) {
    throw Failure(ExitCode::Usage, explanation(*record, full).text);
  }
  if (isStoredAsEnabled(*record, full) != enabled) {
    AccountsManager::accountWillChangeForDataclass(record, full);
    // One that the type does not support may still be stored, by an older system: it can be
    // turned off.
    record->_forcedSetEnabledForDataclass(enabled, full);
    store.take(record);
    store.save();
    try {
      AccountsManager::accountDidChangeForDataclass(record, full);
    } catch (const InternalConsistencyFailure& failure) {
      noteUntold(failure);
    }
  }
  const Explanation now = explanation(*record, full);
  if (now.isOn != enabled) {
    note(std::string("it is stored, but ") + (enabled ? "stays off" : "stays on") + ": " +
         now.text);
  }
  return ExitCode::Done;
}

ExitCode add(const Options& options, const std::string& type, const std::string& className,
             const std::string& name, const std::string& parent) {
  requireAccountType(type);
  requireUnicode(className);
  requireUnicode(name);
  if (className.empty()) {
    throw Failure(ExitCode::Usage, "an account needs the name of its class");
  }
  const EditableStore store(options);
  const auto record = newRecord(*store, type, className);
  if (!name.empty()) record->setDisplayName(name);
  if (parent.empty()) {
    requireLoadable(record->properties());
    store->insertAccount(record);
  } else {
    const auto above = recordNamed(*store, parent);
    if (above->parentAccount()) {
      throw Failure(ExitCode::Usage, "\"" + parent +
                                         "\" is a child itself, and children have none; give its "
                                         "parent " +
                                         above->parentAccountIdentifier().str());
    }
    store->addChildToAccount(record, above);
  }
  store.save();
  if (options.json) {
    printJSON(JSON{{"identifier", record->identifier().str()}});
  } else {
    std::cout << record->identifier() << '\n';
  }
  return ExitCode::Done;
}

ExitCode remove(const Options& options, const std::string& identifier) {
  const EditableStore store(options);
  const auto record = recordNamed(*store, identifier);
  if (const auto parent = record->parentAccount()) {
    store->removeChildWithIdentifierFromAccount(identifier, parent);
  } else {
    store->deleteAccountWithIdentifier(identifier);
  }
  store.save();
  return ExitCode::Done;
}

ExitCode wait() {
  if (AccountsManager::waitForMigrationToFinish(noteHolderOfMigrationLock)) return ExitCode::Done;
  throw Failure(ExitCode::NotSaved,
                std::string("the migration lock cannot be made, so nobody can tell whether a "
                            "migration runs; make ") +
                    kAccountMigrationLockFilename +
                    " below the root a file that you may read, in a folder that is there");
}

}  // namespace tallbook::tool
