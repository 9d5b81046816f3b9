// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Runs a program and prints, after what it printed itself, "whole NANOSECONDS" from fork to wait
// and "peak KIBIBYTES" of memory. What the kernel counts as a program's peak starts with the memory
// of the one that started it, so this one is small.
//
//   run-once SECONDS PROGRAM ARGUMENT...    the program is killed when it takes longer

#include <sys/resource.h>
#include <sys/wait.h>

#include "bench/peers/Peer.h"

int main(int count, char** words) {
  using namespace tallbook::peers;
  if (count < 3) fail("usage: run-once SECONDS PROGRAM ARGUMENT...");
  const std::int64_t start = nanosecondsNow();
  const pid_t child = fork();
  if (child < 0) fail("cannot fork");
  if (child == 0) {
    // The alarm outlives the exec.
    alarm(static_cast<unsigned>(std::atoi(words[1])));
    execv(words[2], words + 2);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child) fail("cannot wait");
  const std::int64_t taken = nanosecondsNow() - start;
  if (WIFSIGNALED(status)) return WTERMSIG(status) + 128;
  std::printf("whole %" PRId64 "\npeak %ld\n", taken, usage.ru_maxrss);
  return WEXITSTATUS(status);
}
