// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/linux/FileDescriptor.h"

namespace tallbook {

/// The root of a device tree, as a process's own root would be: below it, links and ".." lead
/// nowhere outside. The root "" is the running system's own.
///
/// Paths are absolute and, as everywhere in the platform, begin with the root's own path. What lies
/// outside the root, such as the resources beside the library, can be read but not written.
class DeviceRoot {
 public:
  /// `keepsAccessTimes` reads files and folders without leaving access times behind, where the
  /// kernel permits that: it does to a file's owner and to the superuser.
  explicit DeviceRoot(std::string path, bool keepsAccessTimes = false);

  /// Without a slash at its end; empty for the running system.
  const std::string& path() const noexcept { return _path; }
  /// Whether the path is that of the root or of something below it.
  bool contains(std::string_view path) const noexcept;
  /// Opens as `open` does, close-on-exec.
  FileDescriptor open(const std::string& path, int flags, unsigned mode,
                      std::error_code& error) const;
  /// The same below an open folder, whose entry `name` is.
  FileDescriptor openAt(const FileDescriptor& folder, const std::string& name, int flags,
                        std::error_code& error) const;
  /// The content of a regular file, as `FileSystem::readFile`.
  std::string readFile(const std::string& path, std::error_code& error) const;
  /// Whether a regular file is there, or a link to one.
  bool hasFile(const std::string& path) const;
  /// Whether the root folder is the calling user's own.
  bool belongsToCaller() const;
  /// The path of the open file as the kernel knows it, links resolved; empty where it has none.
  static std::string placeOf(const FileDescriptor& file);

 private:
  template <class Open>
  FileDescriptor openKeepingAccessTime(int flags, std::error_code& error, const Open& open) const;
  FileDescriptor openAnywhere(const std::string& path, int flags, unsigned mode,
                              std::error_code& error) const;

  std::string _path;
  FileDescriptor _root;
  bool _keepsAccessTimes;
};

/// Opens a file for reading: at once, also a pipe without a writer, but waits for another program's
/// lease on a regular file. `open(flags)` opens it.
FileDescriptor openToRead(const std::function<FileDescriptor(int flags, std::error_code&)>& open,
                          std::error_code& error);

/// `open` below the open folder `root`, which is "/" to it and to every link on the way. The first
/// uses the kernel's own confinement (`openat2`), the second walks from folder to folder, for
/// kernels and sandboxes without it.
FileDescriptor openConfined(const FileDescriptor& root, const std::string& path, int flags,
                            unsigned mode, std::error_code& error);
FileDescriptor openByWalking(const FileDescriptor& root, const std::string& path, int flags,
                             unsigned mode, std::error_code& error);

}  // namespace tallbook
