#pragma once

#include <string>

#include "tools/tallbook-migrate/DeviceTree.h"

namespace tallbook::migrate {

/// Keeps other migration hosts from a device while it lives. The migration's own lock begins later
/// than this host's look at the accounts before: without this one, two hosts would both look, both
/// wait, and the second would report as its work what the first did.
class HostLock {
 public:
  /// Waits for the lock, an advisory one on a hidden file in the folder at `path` below the root of
  /// the device tree, which the kernel gives up with its holder. The file belongs to the folder's
  /// owner and they alone may open it, so that no other user can hold hosts up. Where the caller
  /// cannot make it, there is no lock: they cannot replace the accounts file either. Throws Failure
  /// where a file is there that they may not open.
  HostLock(const std::string& root, const std::string& path);

 private:
  Descriptor _file;
};

}  // namespace tallbook::migrate
