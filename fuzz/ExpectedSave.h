// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tallbook/AccountsManager.h"

namespace tallbook::fuzz {

/// What has to be in the accounts file after a store's save, whatever else was saved meanwhile. It
/// compares the records of the file itself, so that no load can hide what became of them.
class ExpectedSave {
 public:
  using Bytes = std::optional<std::string>;

  /// Of a store that was just loaded.
  explicit ExpectedSave(const AccountsManager& store);
  /// What is there just before the save.
  void note(const AccountsManager& store, const Bytes& file);

  /// After a `saveChanges` that is said to have been done.
  void checkSavedChanges(const AccountsManager& store, const Bytes& file) const;
  /// After a `saveAllAccounts` that is said to have been done.
  void checkSavedAll(const AccountsManager& store, const Bytes& file) const;

 private:
  using Records = std::vector<DictionaryRef>;

  void noteOrigins(const AccountsManager& store);
  Records originsOf(const AccountsManager& store) const;
  void checkIdentified(const Records& held, const ArrayRef& file) const;
  void checkNameless(const AccountsManager& store, const Records& held, const ArrayRef& file) const;

  /// What each account was made of, by the account.
  std::map<std::shared_ptr<BasicAccount>, DictionaryRef> _origins;
  Records _read;    ///< the records that the store was loaded from
  ArrayRef _file;   ///< what "Accounts" has just before the save
  Records _loaded;  ///< what another store makes of that
};

}  // namespace tallbook::fuzz
