#pragma once

#include <memory>
#include <string_view>

namespace tallbook {

/// An exclusive hold on a name, shared by all processes of the device. Ends with the object, and
/// with the process that holds it.
class LockHold {
 public:
  virtual ~LockHold() = default;
};

/// Exclusive locks between processes, by name.
class NamedLock {
 public:
  virtual ~NamedLock() = default;

  /// Waits, without limit, until no other holder has the name, and holds it. Null when the lock
  /// cannot be made.
  virtual std::unique_ptr<LockHold> lock(std::string_view name) = 0;
};

}  // namespace tallbook
