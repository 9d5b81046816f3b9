// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/String.h"
#include "tallbook/Value.h"

#include "model/DropIns.h"

namespace tallbook {

/// What the shipped resource says about one account type. Lists are frozen; a list that the
/// resource does not have is null.
struct AccountTypeEntry {
  DictionaryRef described;        ///< the resource's own entry
  ArrayRef supportedDataclasses;  ///< the recognised ones, in the resource's order
  ArrayRef orderedDataclasses;    ///< the same in canonical order, each once; never null
};

/// The account types that records may have. Read from the resource "AccountTypesProperties" and its
/// drop-ins once and never changed afterwards, so that any thread may read it.
class AccountTypeCatalogue {
 public:
  /// The process's catalogue. Throws InternalConsistencyFailure when the resource is missing or no
  /// property-list dictionary.
  static const AccountTypeCatalogue& shared();

  /// Null for a type without an entry.
  const AccountTypeEntry* entryForType(std::string_view type) const;
  const std::vector<std::pair<String, AccountTypeEntry>>& entries() const noexcept {
    return _entries;
  }
  /// The drop-ins that it does without, each with its fault.
  const std::vector<DropIn>& leftOut() const noexcept { return _leftOut; }

 private:
  static AccountTypeCatalogue read();
  /// Adds the types of the resource or of a drop-in, which are dictionaries.
  void add(const DictionaryRef& types, bool hasNotes);
  /// Why the types of a drop-in cannot be added, on one line; else empty.
  std::string faultOf(const DictionaryRef& types) const;

  // So few that searching them one by one is quicker than hashing.
  std::vector<std::pair<String, AccountTypeEntry>> _entries;
  std::vector<DropIn> _leftOut;
};

}  // namespace tallbook
