// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <stdexcept>
#include <string>

namespace tallbook::tool {

/// What the process answers to its caller.
enum class ExitCode {
  Done = 0,
  NotFound = 1,    ///< no such record, key or type; for `check`: it found something
  Usage = 2,       ///< the command line asks for something that cannot be
  Unreadable = 3,  ///< a file is no accounts file, cannot be read, or is too large to print
  NotSaved = 4,    ///< nothing was changed: writing, printing or the installation failed
  NotPrinted = 5   ///< what was to be changed is saved, but the result could not be printed
};

/// Ends a command; `what()` says what is wrong and what to do about it.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), _code(code) {}
  ExitCode code() const noexcept { return _code; }

 private:
  ExitCode _code;
};

/// Throws Failure where there is a reason why something that was asked for cannot be.
inline void refuseBecause(const std::string& why) {
  if (!why.empty()) throw Failure(ExitCode::Usage, why);
}

}  // namespace tallbook::tool
