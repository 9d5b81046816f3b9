// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>
#include <sys/types.h>

namespace tallbook::test {

/// A forked process of the test program that does one piece of work. The two talk in single
/// characters, so that nobody has to sleep to find the other ready.
class ChildProcess {
 public:
  /// The child's end of the conversation; `hear` answers 0 when the parent is gone.
  class Parent {
   public:
    Parent(int from, int to) : _from(from), _to(to) {}
    void say(char word);
    char hear();

   private:
    int _from;
    int _to;
  };

  /// The child ends with 0 when `work` returns true, else, exceptions included, with 1. It runs no
  /// destructors of the parent's objects.
  explicit ChildProcess(const std::function<bool(Parent&)>& work);
  /// Kills the child if it still runs.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void say(char word);
  /// Waits for the child's next character; 0 when it ended.
  char hear();
  /// Ends the child with SIGKILL.
  void kill();
  /// Waits for the child's end: its exit code, or -1 for the end by a signal.
  int wait();

 private:
  pid_t _pid = -1;
  int _from = -1;
  int _to = -1;
};

}  // namespace tallbook::test
