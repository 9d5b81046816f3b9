// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/AccountsText.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"

namespace tallbook::tool {

ExitCode apply(const Options& options) {
  const AccountsFile wanted = readAccountsText(options.file);
  if (wanted.state.kind == AccountsFileState::Kind::Missing) {
    throw Failure(ExitCode::NotFound, "there is no " + wanted.path);
  }
  if (wanted.isUnusable()) {
    throw unusable(wanted,
                   "give accounts as \"tallbook dump\" or \"tallbook --json dump\" prints them");
  }
  requirePrintable(wanted);
  requireNoUpgradeAhead(wanted, options);
  const EditableStore store(options);
  requirePrintable(store.file());
  const DictionaryRef before = store.accounts();
  store.apply(wanted.records(), options.prune);
  store.showAndSave(options, before);
  return ExitCode::Done;
}

}  // namespace tallbook::tool
