// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {

ExitCode remove(const Options& options) {
  const EditableStore store(options);
  const auto record = recordNamed(*store, options.account);
  const ArrayRef children = (*record->properties())[kAccountChildAccounts].array();
  if (!options.isAgreedTo && children && !children->empty() && isSomebodyThere() &&
      !isAgreed("remove \"" + record->nameForPeople() + "\" and its children (" +
                std::to_string(children->size()) + ")?")) {
    throw Failure(ExitCode::NotSaved, "nothing is removed");
  }
  const String own = record->identifier();
  if (const auto parent = record->parentAccount()) {
    // With the identifier by which it is found there, which the file may lack.
    store->takeUpChangesOfAccount(record);
    store->removeChildWithIdentifierFromAccount(own, parent);
  } else {
    store->deleteAccountWithIdentifier(own);
  }
  store.save();
  return ExitCode::Done;
}

}  // namespace tallbook::tool
