// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <vector>

#include "tallbook/Value.h"

#include "store/AccountsMerge.h"
#include "store/RecordsByContent.h"

namespace tallbook {

/// Which records of three lists are one account's, or one child's.
///
/// A record is known by its identifier. Records that share one with others of their list, and those
/// that have none, are known by what they held before they were changed here: each of the store's
/// goes with one record of that very content in either other list, if there is one left.
struct RecordPairing {
  /// Positions in the other lists; kNoRecord for none.
  struct OfHere {
    std::size_t base = kNoRecord;
    std::size_t file = kNoRecord;
    bool isKnownByContent = true;
  };
  struct OfFile {
    std::size_t here = kNoRecord;
    std::size_t base = kNoRecord;
  };

  RecordPairing(const std::vector<DictionaryRef>& base, const std::vector<HeldRecord>& here,
                const std::vector<DictionaryRef>& file);

  std::vector<OfHere> ofHere;
  std::vector<OfFile> ofFile;
};

}  // namespace tallbook
