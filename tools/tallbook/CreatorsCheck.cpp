// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/CreatorsCheck.h"

#include <cerrno>
#include <cstring>
// Only the system's own calls make processes, and tell how one ended.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tallbook/AccountCreators.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "tools/common/FileBytes.h"

namespace tallbook::tool {
namespace {

std::string endOf(int status) {
  if (WIFEXITED(status)) return "ends the process with " + std::to_string(WEXITSTATUS(status));
  return std::string("ends the process: ") + ::strsignal(WTERMSIG(status));
}

/// What the class of a creator can do, found out in another process: a module's code may end the
/// one it is loaded into.
Finding lookFromAfarAt(const AccountCreator& creator) {
  constexpr unsigned kLongestLook = 60;  // seconds
  const int file = ::memfd_create("look", MFD_CLOEXEC);
  const pid_t child = file < 0 ? -1 : ::fork();
  if (child == 0) {
    // What the module prints is no part of the result.
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    ::alarm(kLongestLook);
    const CreatorOperations operations = operationsOfCreator(creator);
    const std::string text =
        (operations.fault.empty() ? "+" : "-") + creator.className + ": " + operations.text();
    ::_exit(::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) {
    return {"broken", creator.place, std::strerror(errno)};
  }
  std::error_code error;
  const std::string told = bytesOfFile("/proc/self/fd/" + std::to_string(file), error);
  ::close(file);
  if (told.empty()) return {"broken", creator.place, "its module " + endOf(status)};
  return {told.front() == '+' ? "fit" : "broken", creator.place, told.substr(1)};
}

}  // namespace

std::vector<Finding> findingsOfModules() {
  std::vector<Finding> findings;
  for (const AccountCreator& creator : accountCreators()) {
    if (creator.fault.empty()) findings.push_back(lookFromAfarAt(creator));
  }
  return findings;
}

std::string adviceOnFailure() {
  std::string advice;
  try {
    for (const Finding& finding : findingsInCreators()) {
      advice += "; " + finding.place + ": " + finding.why;
    }
  } catch (const InternalConsistencyFailure&) {
    return "; the installation is broken, reinstall it";
  }
  return advice.empty() ? "; \"tallbook check --modules\" looks at the modules" : advice;
}

}  // namespace tallbook::tool
