// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tallbook/AccountCreators.h"
#include "tallbook/Value.h"

#include "model/CreatorEntries.h"

namespace tallbook {

/// The creators information, as several files have it: the device's own, which may lack types, the
/// shipped one, and the drop-ins of components.
struct CreatorsInformation {
  /// Reads it afresh. It is readable where the first of its files is.
  static CreatorsInformation read();

  /// For each type and entry that counts; null where there is none.
  DictionaryRef merged() const;

  bool isReadable = false;
  std::string file;  ///< the first one's path, or the name of one that is not there
  /// What counts, in its order. A type has several where drop-ins add to it.
  std::vector<CreatorEntries> entries;
  /// Files that cannot be read, and of drop-ins that are left out what is wrong with them.
  std::vector<AccountCreator> faults;
};

}  // namespace tallbook
