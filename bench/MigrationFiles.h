// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <string>

#include "tallbook/Value.h"

namespace tallbook::bench {

/// What a device has before a migration of `accounts` accounts.
enum class Before {
  LegacyFiles,  ///< half of them in the legacy mail file, half in the legacy Exchange file
  VersionZero   ///< an accounts file of version 0 with accounts that the version steps change
};

/// Writes the files of such a device below the installed platform's root and removes what an
/// earlier migration left.
void writeFilesBefore(Before before, std::size_t accounts);

}  // namespace tallbook::bench
