// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <system_error>

namespace tallbook {

/// Why the accounts file was not replaced.
struct SaveFailure {
  std::string operation;  ///< what could not be done, such as "write the new accounts file"
  std::string reason;     ///< on one line
  std::error_code error;  ///< the system's, where it was the system that refused

  /// Whether it tells of a failure at all.
  explicit operator bool() const noexcept { return !operation.empty(); }
  /// "cannot write the new accounts file: No space left on device".
  std::string text() const { return "cannot " + operation + ": " + reason; }
};

}  // namespace tallbook
