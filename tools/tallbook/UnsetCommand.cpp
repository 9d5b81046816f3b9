// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/RecordKeys.h"
#include "tallbook/Vocabulary.h"

#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {

ExitCode unset(const Options& options) {
  const std::string& key = options.key;
  refuseBecause(whyKeyIsFixed(key));
  if (key == kAccountClass.view()) {
    throw Failure(ExitCode::Usage,
                  "an account without \"Class\" is dropped at the next load; set "
                  "it to another class instead");
  }
  const EditableStore store(options);
  const auto record = recordNamed(*store, options.account);
  if (!record->properties()->contains(key)) {
    throw Failure(ExitCode::NotFound, "the account has no \"" + key + "\" of its own");
  }
  record->removeAccountPropertyForKey(key);
  store->takeUpChangesOfAccount(record);
  store.save();
  return ExitCode::Done;
}

}  // namespace tallbook::tool
