// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tallbook {

/// An exclusive hold on a name, shared by all processes of the device. Ends with the object, and
/// with the process that holds it.
class LockHold {
 public:
  virtual ~LockHold() = default;

  /// Ends the hold at once, whoever else shares the object. A second time nothing happens.
  virtual void release() noexcept = 0;
};

/// Exclusive locks between processes, by name.
class NamedLock {
 public:
  virtual ~NamedLock() = default;

  /// Hears who holds a lock: "process 4711 (name of its program)", or that nobody can tell.
  using LongWait = std::function<void(std::string_view holder)>;

  using Deadline = std::chrono::steady_clock::time_point;

  /// Waits until no other holder has the name, or the deadline is over, and holds it. Null when the
  /// lock cannot be made, and after the deadline. A wait that gets long is told to `longWait` once,
  /// on the waiting thread.
  virtual std::unique_ptr<LockHold> lock(std::string_view name, const LongWait& longWait = {},
                                         Deadline deadline = Deadline::max()) = 0;
};

}  // namespace tallbook
