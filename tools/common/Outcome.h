#pragma once

#include <stdexcept>
#include <string>

namespace tallbook::tool {

/// What the process answers to its caller.
enum class ExitCode {
  Done = 0,
  NotFound = 1,    ///< no such record, key or type; for `check`: it found something
  Usage = 2,       ///< the command line asks for something that cannot be
  Unreadable = 3,  ///< a file is there and is no accounts file, or too large to print
  NotSaved = 4     ///< nothing was changed, since writing failed or the installation is broken
};

/// Ends a command; `what()` says what is wrong and what to do about it.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), _code(code) {}
  ExitCode code() const noexcept { return _code; }

 private:
  ExitCode _code;
};

}  // namespace tallbook::tool
