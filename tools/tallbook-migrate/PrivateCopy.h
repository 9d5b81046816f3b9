#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tools/tallbook-migrate/Device.h"

namespace tallbook::migrate {

/// A device tree in a temporary folder of this process alone, with all that a migration of the
/// given device would find: the same files, and the same obstacles where something else lies or may
/// not be read or written. "mobile" is the calling user there. The device is only looked at.
class PrivateCopy {
 public:
  /// Throws std::filesystem::filesystem_error where the copy cannot be made.
  explicit PrivateCopy(const DevicePaths& device);
  ~PrivateCopy();
  PrivateCopy(const PrivateCopy&) = delete;
  PrivateCopy& operator=(const PrivateCopy&) = delete;

  std::string root() const { return _root.string(); }

 private:
  using Path = std::filesystem::path;

  void copyAll(const DevicePaths& device);
  /// Copies what lies at `relative` below the device's folder to the same place below the copy's,
  /// and the folders on the way.
  void copyBelow(const Path& source, const Path& target, const Path& relative);
  /// The same for what lies in a folder, to the given depth.
  void copyFolderBelow(const Path& source, const Path& target, const Path& relative, int depth);
  void copyEntry(const Path& from, const Path& to);
  /// False where nothing can lie below.
  bool copyFolder(const Path& from, const Path& to);
  void remove() noexcept;

  Path _root;
  /// The folders that were made, those above before those in them, with the permissions to set
  /// once everything is there.
  std::vector<std::pair<Path, std::filesystem::perms>> _folders;
  int _linked = 0;
};

/// While this lives, a signal that would end the process waits, so that nothing is left behind.
class DelayedEnd {
 public:
  DelayedEnd();
  ~DelayedEnd();
  DelayedEnd(const DelayedEnd&) = delete;
  DelayedEnd& operator=(const DelayedEnd&) = delete;
};

}  // namespace tallbook::migrate
