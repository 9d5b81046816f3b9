// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>

namespace tallbook {

/// The text with its control characters, line ends above all, as "\x0a": what comes out of a file
/// must not be able to end a line of a log and begin one of its own. Of a long text the first
/// mebibyte, and "...".
std::string onOneLine(std::string_view text);

/// The system's log, by subsystem and category.
class SystemLog {
 public:
  virtual ~SystemLog() = default;

  /// Whether a written line reaches anyone. Callers format nothing when it does not.
  virtual bool hasListener() const = 0;
  /// Writes one line at the default level.
  virtual void write(std::string_view subsystem, std::string_view category,
                     std::string_view line) = 0;
};

/// The process's console log: plain lines.
class ConsoleLog {
 public:
  virtual ~ConsoleLog() = default;

  /// Writes one line; the line end is added.
  virtual void write(std::string_view line) = 0;
};

}  // namespace tallbook
