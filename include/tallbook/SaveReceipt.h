// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tallbook/SaveFailure.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// Two changes of one thing, of which the one made in the saving store was written.
struct SaveClash {
  /// What both sides changed.
  enum class Kind {
    Key,     ///< a value of an account, changed to different ones
    Account  ///< deleted on one side, changed on the other
  };

  Kind kind = Kind::Key;  ///< also tells whether `key` is null
  String account;         ///< identifier of the top-level account
  String child;           ///< of its child where it is a child's; else null
  String key;             ///< null for a whole account
  Value here;       ///< what was written; null where that is the absence of the key or account
  Value elsewhere;  ///< what it was changed to by others; null where they removed it
};

/// What an account in the file owes to others: it was not so when this store last read or wrote it.
struct TakenOver {
  /// What others did with the account.
  enum class Kind { Added, Changed, Removed };

  Kind kind = Kind::Changed;  ///< only a changed one has `keys`
  String account;             ///< identifier of the top-level account
  /// Of a changed one: the keys that were taken over, "ChildAccounts" among them.
  std::vector<String> keys;
};

/// What a save did.
struct SaveReceipt {
  bool isSaved = false;  ///< whether the file was replaced, or was as it should be already
  SaveFailure failure;   ///< why not
  std::vector<SaveClash> clashes;    ///< what this store's changes won over
  std::vector<TakenOver> takenOver;  ///< what the file now has, and the store has not
  /// How often the file was read: more than once where others saved meanwhile.
  unsigned attempts = 0;
  /// Why the file before could not be kept as a generation; else empty.
  std::string generationFailure;
};

}  // namespace tallbook
