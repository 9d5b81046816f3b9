#include <chrono>
#include <cstdint>
#include <iostream>

#include "tallbook/AccountsManager.h"
#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Dataclasses.h"
#include "tools/common/Output.h"
#include "tools/common/Question.h"
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

std::string usualClass(const std::string& type) {
  const ArrayRef usual = BasicAccount::accountClassesForAccountType(type);
  const String first = usual && !usual->empty() ? (*usual)[0].string() : nullptr;
  if (!first.empty()) return first.str();
  throw Failure(ExitCode::Usage,
                "nobody knows what class accounts of the type " + type + " usually have; give one");
}

std::shared_ptr<BasicAccount> newRecord(const AccountsManager& store, const std::string& type,
                                        const std::string& className) {
  if (type != kOnMyDeviceAccountType.view()) {
    return BasicAccount::accountWithTypeClass(type, className);
  }
  requireRoomFor(type, store);
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

ExitCode add(const Options& options, const std::string& type,
             const std::optional<std::string>& wantedClass, const std::string& name,
             const std::string& parent) {
  requireAccountType(type);
  const std::string className = wantedClass ? *wantedClass : usualClass(type);
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
  const ArrayRef usual = BasicAccount::accountClassesForAccountType(type);
  if (usual && !usual->contains(std::string_view(className))) {
    note("accounts of the type " + type + " usually have one of the classes " + joined(usual) +
         ", not " + className);
  }
  if (options.json) {
    printJSON(JSON{{"identifier", record->identifier().str()}});
  } else {
    std::cout << record->identifier() << '\n';
  }
  return ExitCode::Done;
}

ExitCode remove(const Options& options, const std::string& identifier, bool isAgreedTo) {
  const EditableStore store(options);
  const auto record = recordNamed(*store, identifier);
  const ArrayRef children = (*record->properties())[kAccountChildAccounts].array();
  if (!isAgreedTo && children && !children->empty() && isSomebodyThere() &&
      !isAgreed("remove \"" + nameOf(*record) + "\" and its children (" +
                std::to_string(children->size()) + ")?")) {
    throw Failure(ExitCode::NotSaved, "nothing is removed");
  }
  const String own = record->identifier();
  if (const auto parent = record->parentAccount()) {
    store->removeChildWithIdentifierFromAccount(own, parent);
  } else {
    store->deleteAccountWithIdentifier(own);
  }
  store.save();
  return ExitCode::Done;
}

ExitCode wait(const std::optional<double>& seconds) {
  using Clock = std::chrono::steady_clock;
  std::optional<std::chrono::milliseconds> timeout;
  if (seconds) timeout.emplace(static_cast<std::int64_t>(*seconds * 1000));
  const auto begin = Clock::now();
  if (AccountsManager::waitForMigrationToFinish(noteHolderOfMigrationLock, timeout)) {
    return ExitCode::Done;
  }
  if (timeout && Clock::now() - begin >= *timeout) {
    throw Failure(ExitCode::NotFound, "a migration still runs");
  }
  throw Failure(ExitCode::NotSaved,
                std::string("the migration lock cannot be made, so nobody can tell whether a "
                            "migration runs; make ") +
                    kAccountMigrationLockFilename +
                    " below the root a file that you may read, in a folder that is there");
}

}  // namespace tallbook::tool
