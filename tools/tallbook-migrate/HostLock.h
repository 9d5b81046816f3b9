#pragma once

#include <string>

namespace tallbook::migrate {

/// Keeps other migration hosts from a device while it lives. The migration's own lock begins later
/// than this host's look at the accounts before: without this one, two hosts would both look, both
/// wait, and the second would report as its work what the first did.
class HostLock {
 public:
  /// Waits for the lock, an advisory one on the folder itself, so that nothing is written and the
  /// kernel gives it up with its holder. A folder that is not there needs none.
  explicit HostLock(const std::string& folder);
  ~HostLock();
  HostLock(const HostLock&) = delete;
  HostLock& operator=(const HostLock&) = delete;

 private:
  int _folder;
};

/// What identifies a file's present content, so that a replaced file can be told; empty where there
/// is none.
std::string stampOfFile(const std::string& path);

}  // namespace tallbook::migrate
