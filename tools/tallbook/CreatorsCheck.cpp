#include "tools/tallbook/CreatorsCheck.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
// Only the system's own calls make processes, and tell how one ended.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tallbook/AccountCreators.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "tools/common/Output.h"

namespace tallbook::tool {
namespace {

std::string endOf(int status) {
  if (WIFEXITED(status)) return "ends the process with " + std::to_string(WEXITSTATUS(status));
  return std::string("ends the process: ") + ::strsignal(WTERMSIG(status));
}

/// What the class of a creator can do, its effect and its words, found out in another process: a
/// module's code may end the one it is loaded into.
JSON lookFromAfarAt(const AccountCreator& creator) {
  constexpr unsigned kLongestLook = 60;  // seconds
  const int file = ::memfd_create("look", MFD_CLOEXEC);
  const pid_t child = file < 0 ? -1 : ::fork();
  if (child == 0) {
    // What the module prints is no part of the result.
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    ::alarm(kLongestLook);
    const CreatorOperations operations = operationsOfCreator(creator);
    const char* const effect = operations.fault.empty() ? "fit" : "broken";
    const std::string text = JSON{effect, creator.className + ": " + operations.text()}.dump();
    ::_exit(::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return {"broken", std::strerror(errno)};
  const std::unique_ptr<FILE, int (*)(FILE*)> told(::fdopen(file, "r"), &std::fclose);
  std::rewind(told.get());
  JSON answer = JSON::parse(told.get(), nullptr, false);
  if (answer.is_discarded()) answer = {"broken", "its module " + endOf(status)};
  return answer;
}

}  // namespace

std::vector<Finding> findingsOfCreators() {
  std::vector<Finding> findings;
  for (const AccountCreator& creator : accountCreators()) {
    if (!creator.fault.empty()) findings.push_back({"broken", creator.place, creator.fault});
  }
  return findings;
}

std::vector<Finding> findingsOfModules() {
  std::vector<Finding> findings;
  for (const AccountCreator& creator : accountCreators()) {
    if (!creator.fault.empty()) continue;
    const JSON look = lookFromAfarAt(creator);
    findings.push_back({look[0] == "fit" ? "fit" : "broken", creator.place, look[1]});
  }
  return findings;
}

std::string adviceOnFailure() {
  std::string advice;
  try {
    for (const Finding& finding : findingsOfCreators()) {
      advice += "; " + finding.place + ": " + finding.why;
    }
  } catch (const InternalConsistencyFailure&) {
    return "; the installation is broken, reinstall it";
  }
  return advice.empty() ? "; \"tallbook check --modules\" looks at the modules" : advice;
}

}  // namespace tallbook::tool
