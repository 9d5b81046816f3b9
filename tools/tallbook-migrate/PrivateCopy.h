#pragma once

#include <csignal>
#include <filesystem>
#include <map>
#include <string>

#include "tools/tallbook-migrate/Device.h"
#include "tools/tallbook-migrate/DeviceTree.h"

namespace tallbook::migrate {

/// A device tree in a temporary folder of this process alone, with all that a migration of the
/// given device by this user would find: the same files, and the same obstacles where something
/// else lies or may not be read or written. The device is only looked at, and keeps even its access
/// times where the kernel permits that: it does to a file's owner and to the superuser. Signals
/// wait until the copy is gone.
class PrivateCopy {
 public:
  /// Throws Failure where the temporary folder is one of the device, and
  /// std::filesystem::filesystem_error where the copy cannot be made.
  explicit PrivateCopy(const DevicePaths& device);
  ~PrivateCopy();
  PrivateCopy(const PrivateCopy&) = delete;
  PrivateCopy& operator=(const PrivateCopy&) = delete;

  std::string root() const { return _root.string(); }

 private:
  void copyAll(const DevicePaths& device);
  void copy(const Stop& stop);
  void remove() noexcept;

  sigset_t _signals;  ///< those that were held before
  std::filesystem::path _root;
  /// The copied folders and the permissions that they get once everything is there.
  std::map<std::filesystem::path, std::filesystem::perms> _folders;
};

}  // namespace tallbook::migrate
