// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <iostream>

#include "tallbook/AccountsManager.h"
#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

std::string firstOf(const ArrayRef& usual, const std::string& type) {
  const String first = usual && !usual->empty() ? (*usual)[0].string() : nullptr;
  if (!first.empty()) return first.str();
  throw Failure(ExitCode::Usage,
                "nobody knows what class accounts of the type " + type + " usually have; give one");
}

std::shared_ptr<BasicAccount> newRecord(const std::string& type, const std::string& className) {
  if (type != kOnMyDeviceAccountType.view()) {
    return BasicAccount::accountWithTypeClass(type, className);
  }
  return BasicAccount::initWithProperties(DeviceLocalAccount::basicAccountProperties(className));
}

}  // namespace

ExitCode add(const Options& options) {
  const std::string& type = options.type;
  requireAccountType(type);
  const ArrayRef usual = BasicAccount::accountClassesForAccountType(type);
  const std::string className = options.className ? *options.className : firstOf(usual, type);
  requireUnicode(className);
  requireUnicode(options.name);
  if (className.empty()) {
    throw Failure(ExitCode::Usage, "an account needs the name of its class");
  }
  const EditableStore store(options);
  const auto record = newRecord(type, className);
  if (!options.name.empty()) record->setDisplayName(options.name);
  if (options.parent.empty()) {
    refuseBecause(store->whyNotInsertable(record->properties()));
    store->insertAccount(record);
  } else {
    const auto above = recordNamed(*store, options.parent);
    if (above->parentAccount()) {
      throw Failure(ExitCode::Usage, "\"" + options.parent +
                                         "\" is a child itself, and children have none; give its "
                                         "parent " +
                                         above->parentAccountIdentifier().str());
    }
    store->addChildToAccount(record, above);
  }
  store.save();
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

}  // namespace tallbook::tool
