// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdint>
#include <vector>

#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// What happened to an account between two snapshots; the numbers go into change records.
enum class AccountChange : std::int32_t { Added = 0, Kept = 1, Removed = 2 };

/// The dataclasses whose notifiers a change concerns, each once. `original` is null for an added
/// account, `current` for a removed one; null has no dataclasses.
///
/// Of a kept account: the dataclasses switched on or off and, when any other property changed, all
/// that are enabled now. The active flag and the children do not count as properties here.
std::vector<String> dataclassesConcernedByChange(AccountChange change,
                                                 const DictionaryRef& original,
                                                 const DictionaryRef& current);

}  // namespace tallbook
