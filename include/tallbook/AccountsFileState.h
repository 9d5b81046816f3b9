// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdint>
#include <string>
#include <system_error>

namespace tallbook {

/// What was found where the accounts file lies.
struct AccountsFileState {
  /// Which files count as the accounts, and which may be replaced.
  enum class Kind {
    Missing,    ///< no such file
    Whole,      ///< an accounts file, of the format version `version`
    Malformed,  ///< read, but no accounts file: it counts as empty, and is kept before it is
                ///< replaced
    Unreadable  ///< it could not be read: nothing that it may hold is known, and nothing replaces
                ///< it
  };

  Kind kind = Kind::Missing;  ///< where it is `Missing`, the rest is empty
  /// The format version that the file itself gives; 0 where it gives none.
  std::uint64_t version = 0;
  std::string reason;     ///< on one line, why it is malformed or unreadable; else empty
  std::error_code error;  ///< the system's error of an unreadable file
};

}  // namespace tallbook
