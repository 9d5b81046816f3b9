// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "tools/common/AccountsFile.h"
#include "tools/tallbook/Commands.h"

namespace tallbook::tool {

/// The device's accounts, to be changed and saved. Stands in for no file that could not be read,
/// and for one that is no accounts file only when told to: the save keeps that one beside the new
/// file.
class EditableStore {
 public:
  /// Throws Failure for such a file, and for one of an older version whose upgrade is not given up.
  explicit EditableStore(const Options& options);
  /// Another store of the same file as it was then, without what was changed in this one. Waits
  /// for a migration as the first one did.
  EditableStore again(const Options& options) const;

  /// The accounts file that the store was made of.
  const AccountsFile& file() const { return _file; }
  AccountsManager& operator*() const { return *_store; }
  AccountsManager* operator->() const { return _store.get(); }

  /// The accounts as they are now, as the top level of an accounts file; frozen.
  DictionaryRef accounts() const;
  /// Makes the accounts what the list says, as `applyAccounts` does. Throws Failure, and leaves a
  /// store that is not to be saved, where that cannot be, and for no list, which is hardly meant as
  /// an empty one.
  void apply(const ArrayRef& wanted, bool prune) const;
  /// Names what clashed with changes of others. Throws Failure where the file was not replaced.
  void save(AccountsManager::KeepGeneration keep =
                AccountsManager::KeepGeneration::AtMostOnceAMinute) const;
  /// Prints what differs from `before`, which `accounts` gave, and saves where anything does. What
  /// it replaces is kept as a generation of its own, so that `undo` takes back just this.
  void showAndSave(const Options& options, const DictionaryRef& before) const;

 private:
  AccountsFile _file;
  std::shared_ptr<AccountsManager> _store;
};

/// Throws Failure for a file of an older version, unless the options give its upgrade up: saving it
/// makes it read as current.
void requireNoUpgradeAhead(const AccountsFile& file, const Options& options);
/// Says that a change is saved although not everyone who listens could be told of it.
void noteUntold(const InternalConsistencyFailure& failure);

}  // namespace tallbook::tool
