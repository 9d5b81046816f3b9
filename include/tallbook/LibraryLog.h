// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

#include "tallbook/Export.h"

/// @file
/// The library's log.

namespace tallbook {

/// The library's log: subsystem "com.orvane.tallbook", category "log". Thread-safe.
class TALLBOOK_EXPORT LibraryLog {
 public:
  /// Whether a message reaches anyone; format nothing when it does not.
  bool isEnabled() const;
  /// Writes one line at the default level: `operation (line) "message"`, with control characters as
  /// "\x0a". The message ends at the line's last quote.
  void write(std::string_view operation, unsigned line, std::string_view message);
};

}  // namespace tallbook

/// The library's log handle, one for the process.
extern "C" TALLBOOK_EXPORT tallbook::LibraryLog* _TBLogSystem();
