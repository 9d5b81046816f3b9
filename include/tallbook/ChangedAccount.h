// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <vector>

#include "tallbook/Export.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// A key of an account that came, went, or has another value. A null value may be stored like any
/// other; it is not the same as none.
struct ChangedKey {
  String key;                   ///< the record's, such as "DisplayName"
  std::optional<Value> before;  ///< none where the key was added
  std::optional<Value> now;     ///< none where it was removed
};

/// What became of an account, or of a child of one, between two states of the accounts file. All
/// that it holds is frozen.
struct ChangedAccount {
  /// With another identifier it is another account: one is removed, one added.
  enum class Kind { Removed, Changed, Added };

  Kind kind = Kind::Changed;  ///< says which of `before` and `now` there are
  String identifier;          ///< null for a record that has none
  String type;                ///< as it is now; of a removed one as it was
  /// Of a child, the record of its account: as it is now, else as it was. Null for an account.
  DictionaryRef parent;

  /// What is enabled, in canonical order, as `BasicAccount::enabledDataclasses` answers for the
  /// record as it was and as it is, by today's restrictions. Null where no list is stored, and
  /// where there was or is no account.
  /// @{
  ArrayRef dataclassesBefore, dataclassesNow;
  /// @}
  /// All that differs in the record itself; all its keys for an added or removed one. Children are
  /// told on their own, so "ChildAccounts" is among the keys only where its value changed and no
  /// child did, as when an empty list goes.
  std::vector<ChangedKey> keys;

  DictionaryRef before;  ///< the whole record; null for an added one
  DictionaryRef now;     ///< null for a removed one
};

/// What differs between two accounts files.
struct AccountsFileDifferences {
  std::vector<ChangedKey> keys;  ///< of the top level, but for "Accounts"
  /// In the order and by the rules of `AccountsWatcher::Answer`, but for one: a record of which no
  /// store makes an account counts as one too.
  std::vector<ChangedAccount> accounts;
  bool isReordered = false;  ///< whether records that are in both stand in another order

  /// Whether the files say the same.
  bool empty() const noexcept { return keys.empty() && accounts.empty() && !isReordered; }
};

/// What differs between the top levels of two accounts files, which must be frozen. Throws
/// InternalConsistencyFailure where the account type catalogue cannot be read.
[[nodiscard]] TALLBOOK_EXPORT AccountsFileDifferences
differencesBetween(const DictionaryRef& before, const DictionaryRef& now);

/// The keys that differ in two dictionaries: those of the present one in its order, then those that
/// are gone.
[[nodiscard]] TALLBOOK_EXPORT std::vector<ChangedKey> changedKeys(const Dictionary& before,
                                                                  const Dictionary& now);

}  // namespace tallbook
