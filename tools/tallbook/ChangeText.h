// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/ChangedAccount.h"

#include "tools/common/Output.h"

namespace tallbook::tool {

/// Of a changed account or key.
template <class Change>
Style styleOf(const Change& change) {
  return !change.before ? Style::Added : !change.now ? Style::Removed : Style::Changed;
}
/// "added", "removed", "changed".
std::string_view nameOf(Style style);
/// The keys with the values that they had and have, where they had and have one.
JSON jsonFrom(const std::vector<ChangedKey>& keys);

/// What became of an account, on one line: `Work: Calendars off; DisplayName "Work" -> "Office"`.
/// It is called by the name that it had, a child by its account's before its own.
std::string textOf(const ChangedAccount& change);
/// The same with all of the values.
JSON jsonFrom(const ChangedAccount& change);

}  // namespace tallbook::tool
