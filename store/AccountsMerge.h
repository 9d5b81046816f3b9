// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <vector>

#include "tallbook/SaveReceipt.h"
#include "tallbook/Value.h"

namespace tallbook {

/// A record of the store that saves, and the properties that it had when it was made or last saved.
struct HeldRecord {
  DictionaryRef properties;
  DictionaryRef original;  ///< null or empty for none
};

struct MergedAccounts {
  std::vector<Value> records;  ///< what the file is to hold, in its order
  std::vector<SaveClash> clashes;
  std::vector<TakenOver> takenOver;
};

/// Merges whole accounts: `base` are the records as the store last read or wrote them, `here` as it
/// has them now, `file` as the file has them now. No record is null.
///
/// An account that only one side touched since is that side's, deletion and creation included. One
/// that both touched is merged key by key, and so is each of its children, under the children's
/// identifiers; the lists of dataclasses are sets. What both changed differently is written as it
/// is here, and is a clash. The order is the store's; an account that only the file has stays
/// behind the one that it follows there.
///
/// Records that share an identifier, or have none, are written as they are here, in the place of
/// those with their original content; such a one of the file that is nobody's original stays.
///
/// The result shares the records that it was given and what they hold, those of `here` as well.
MergedAccounts mergedAccounts(const std::vector<DictionaryRef>& base,
                              const std::vector<HeldRecord>& here,
                              const std::vector<DictionaryRef>& file);

/// An earlier state of the accounts, `records`, as if it had been changed already as from `before`
/// to `after`, by the same rules and in nothing else: what differs between `records` and `before`
/// goes on differing. Where both are about one key and cannot be told apart, the key stays as it
/// was in `records`.
std::vector<Value> withChangesCarriedOver(const std::vector<DictionaryRef>& records,
                                          const std::vector<DictionaryRef>& before,
                                          const std::vector<DictionaryRef>& after);

}  // namespace tallbook
