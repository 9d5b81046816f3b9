// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "platform/FileWatch.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// One inotify descriptor that watches every folder from the device's root down to the file's own
/// for the name that leads on, and the file itself for what its folder is not asked about.
///
/// A save is one notice of the folder: a file was moved to the name. New files, links and removals
/// are what every save makes under other names as well, so the folder tells of them only where
/// there is no regular file that could be watched for its own end.
class LinuxFileWatch final : public FileWatch {
 public:
  /// `notices` is an inotify descriptor that does not block.
  LinuxFileWatch(FileDescriptor notices, const std::string& path, const DeviceRoot& root);

  int descriptor() const noexcept override { return _notices.get(); }
  bool takeNotices() override;
  std::error_code problem() const noexcept override { return _problem; }

 private:
  /// One watched thing, by the kernel's number for it.
  struct Watched {
    int number;
    std::size_t end;   ///< where its path ends in that of the file
    std::string name;  ///< in the folder; empty for the file, of which everything counts
  };
  static constexpr std::size_t kNowhere = std::string::npos;

  /// Takes what is there, and answers where the path of the topmost thing ends that any of it is
  /// about; nowhere where nothing is about the file.
  std::size_t drain();
  std::size_t placeOf(int number, unsigned mask, const char* name) const;
  /// Watches what lies on the path now, from the folder or file whose path ends there, and nothing
  /// else any more. Those above it are as they were.
  void watchFrom(std::size_t end);
  /// The same from a folder down, of which nothing is watched yet.
  void watchDownwardsFrom(std::size_t end);
  /// Watches the file, or what a link leads to. Whether the file tells its own end from then on.
  bool watchFile();
  /// Where a link leads nowhere, nobody tells that something comes to lie there.
  bool isLink(const std::string& path) const;
  /// Watches, or changes what is told of a thing that is watched.
  std::error_code add(const FileDescriptor& what, unsigned mask, std::size_t end,
                      const std::string& name);

  FileDescriptor _notices;
  const std::string _path;
  const DeviceRoot& _root;
  std::vector<Watched> _watched;
  bool _tellsReplacementsOnly = false;  ///< the file's folder
  std::error_code _problem;
};

/// The kernel's file watches below a device's root.
class LinuxFileWatching final : public FileWatching {
 public:
  explicit LinuxFileWatching(const DeviceRoot& root) : _root(root) {}
  std::unique_ptr<FileWatch> watch(const std::string& path, std::error_code& error) override;

 private:
  const DeviceRoot& _root;
};

}  // namespace tallbook
