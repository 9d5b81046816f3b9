// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace tallbook::bench {

/// While this lives nobody reads the process's console log: a migration writes a line for much of
/// what it does.
class QuietConsole {
 public:
  QuietConsole() : _console(::dup(STDERR_FILENO)) {
    const int nobody = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nobody, STDERR_FILENO);
    ::close(nobody);
  }
  ~QuietConsole() {
    ::dup2(_console, STDERR_FILENO);
    ::close(_console);
  }
  QuietConsole(const QuietConsole&) = delete;
  QuietConsole& operator=(const QuietConsole&) = delete;

 private:
  int _console;
};

}  // namespace tallbook::bench
