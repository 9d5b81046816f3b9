// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/ChildProcess.h"

#include <cerrno>
#include <fcntl.h>
#include <signal.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

// What a build for coverage counts in a process is kept when this is called, and lost in one that
// ends by _exit. Other builds have no such function.
extern "C" void __gcov_dump() __attribute__((weak));  // NOLINT(bugprone-reserved-identifier)

namespace tallbook::test {
namespace {

void sayTo(int fd, char word) {
  if (::write(fd, &word, 1) != 1) throw std::runtime_error("nobody listens");
}

char hearFrom(int fd) {
  char word = 0;
  ssize_t got;
  do {
    got = ::read(fd, &word, 1);
  } while (got < 0 && errno == EINTR);
  return got == 1 ? word : '\0';
}

int exitCodeOf(const std::function<bool(ChildProcess::Parent&)>& work,
               ChildProcess::Parent& parent) {
  try {
    return work(parent) ? 0 : 1;
  } catch (...) {
    return 1;
  }
}

}  // namespace

void ChildProcess::Parent::say(char word) {
  sayTo(_to, word);
}
char ChildProcess::Parent::hear() {
  return hearFrom(_from);
}

ChildProcess::ChildProcess(const std::function<bool(Parent&)>& work) {
  int down[2];
  int up[2];
  if (::pipe2(down, O_CLOEXEC) != 0 || ::pipe2(up, O_CLOEXEC) != 0 || (_pid = ::fork()) < 0) {
    throw std::runtime_error("no child process");
  }
  if (_pid == 0) {
    // A test that is killed leaves nobody behind.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::close(down[1]);
    ::close(up[0]);
    Parent parent(down[0], up[1]);
    const int code = exitCodeOf(work, parent);
    if (__gcov_dump != nullptr) __gcov_dump();
    ::_exit(code);
  }
  ::close(down[0]);
  ::close(up[1]);
  _from = up[0];
  _to = down[1];
}

ChildProcess::~ChildProcess() {
  kill();
  ::close(_from);
  ::close(_to);
}

void ChildProcess::say(char word) {
  sayTo(_to, word);
}
char ChildProcess::hear() {
  return hearFrom(_from);
}

void ChildProcess::kill() {
  if (_pid < 0) return;
  ::kill(_pid, SIGKILL);
  (void)wait();
}

int ChildProcess::wait() {
  int status = 0;
  while (::waitpid(_pid, &status, 0) < 0 && errno == EINTR) {
  }
  _pid = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace tallbook::test
