// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Export.h"
#include "tallbook/Value.h"

namespace tallbook {

/// Something that the library does not take as it stands, or that is to be known of it.
struct Finding {
  /// "dropped": not loaded, and gone once a program saves all that it loaded; "repaired": changed
  /// by the next load; "ignored": kept, and counts as absent; "ambiguous": taken, but not for what
  /// it seems; "broken": fails whoever needs it.
  std::string_view effect;
  std::string place;  ///< "Version", "Accounts[3] (Gmail)", "Accounts[3].ChildAccounts[0]", a path
  std::string why;    ///< on one line
};

/// The first four in the top level of an accounts file, in the file's order. Throws
/// InternalConsistencyFailure where the account type catalogue cannot be read.
[[nodiscard]] TALLBOOK_EXPORT std::vector<Finding> findingsInAccountsFile(
    const Dictionary& topLevel);
/// The wrong ones of `accountCreators`, each "broken". Throws what that does.
[[nodiscard]] TALLBOOK_EXPORT std::vector<Finding> findingsInCreators();

}  // namespace tallbook
