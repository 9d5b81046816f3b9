// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/LiveOutput.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>
// Waiting for several things at once, and for signals among them, is the system's.
#include <limits.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "tools/common/Outcome.h"

namespace tallbook::tool {
namespace {

[[noreturn]] void fail(const char* what) {
  const std::error_code error(errno, std::generic_category());
  throw Failure(ExitCode::NotSaved, std::string(what) + ": " + error.message());
}

}  // namespace

LiveOutput::LiveOutput(bool isPrintedTo) : _printedTo(isPrintedTo ? STDOUT_FILENO : -1) {
  sigset_t stopping;
  sigemptyset(&stopping);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // One that is ignored, as under nohup, would be told all the same once it is blocked.
    struct sigaction present {};
    ::sigaction(signal, nullptr, &present);
    if (present.sa_handler != SIG_IGN) sigaddset(&stopping, signal);
  }
  ::sigprocmask(SIG_BLOCK, &stopping, nullptr);
  // A reader who goes away is an answer of the write, and no signal.
  std::signal(SIGPIPE, SIG_IGN);
  _stop = ::signalfd(-1, &stopping, SFD_CLOEXEC | SFD_NONBLOCK);
  if (_stop < 0) fail("signals cannot be waited for");
}

LiveOutput::~LiveOutput() {
  ::close(_stop);
}

bool LiveOutput::waitFor(int descriptor, int milliseconds) {
  // Of the output only its end is asked for, which is always told.
  pollfd waiting[] = {{_stop, POLLIN, 0}, {_printedTo, 0, 0}, {descriptor, POLLIN, 0}};
  if (::poll(waiting, std::size(waiting), milliseconds) < 0 && errno != EINTR) {
    fail("changes cannot be waited for");
  }
  return waiting[0].revents == 0 && waiting[1].revents == 0;
}

bool LiveOutput::print(const std::string& line) {
  const std::string text = line + "\n";
  // A pipe that says that it takes something takes so much without blocking, so that a reader who
  // has stopped reading does not keep the command from ending.
  constexpr std::size_t kPiece = PIPE_BUF;
  for (std::string_view left = text; !left.empty();) {
    pollfd waiting[] = {{_stop, POLLIN, 0}, {_printedTo, POLLOUT, 0}};
    if (::poll(waiting, std::size(waiting), -1) < 0 && errno != EINTR)
      fail("nothing can be printed");
    if (waiting[0].revents != 0) return false;
    if (waiting[1].revents == 0) continue;
    const ssize_t written = ::write(_printedTo, left.data(), std::min(left.size(), kPiece));
    if (written < 0 && errno == EPIPE) return false;
    if (written < 0 && errno != EINTR && errno != EAGAIN) fail("the result could not be printed");
    if (written > 0) left.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace tallbook::tool
