// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/linux/LinuxFileSystem.h"

namespace tallbook {

class LinuxFolder;

/// A device's files as they would be: what is changed is changed in memory, for as long as the
/// object lives, and the device is only read. What the system would refuse is refused: a change in
/// a folder that the caller may not write, of a file that nobody may replace, for an owner to whom
/// they cannot give it. A full disk is nothing that anybody can foresee.
///
/// A changed file is known by the path by which it was changed, so whoever uses it has to come by
/// one path.
class PreviewFileSystem final : public FileSystem {
 public:
  explicit PreviewFileSystem(const LinuxFileSystem& files);

  std::string readFile(const std::string& path, std::error_code& error) const override;
  std::unique_ptr<Folder> openFolder(const std::string& path,
                                     std::error_code& error) const override;
  std::error_code createDirectories(const std::string& path, unsigned mode) override;

  /// A file, link or folder that exists in memory alone.
  struct Made {
    FileKind kind = FileKind::Regular;
    std::string content;  ///< the bytes of a file, what a link says
    FileVersion version;  ///< its size is that of the content
  };
  /// What has a name: one that was made, or what the device has in `folder` under `name`; neither
  /// where the name is free.
  struct Entry {
    std::shared_ptr<Made> made;
    std::shared_ptr<LinuxFolder> folder;
    std::string name;
  };
  struct Changes {
    const AccountDatabase& accounts;
    std::map<std::string, Entry> entries;              ///< by path
    std::uint64_t lastInode = std::uint64_t{1} << 63;  ///< no device has as many
  };

 private:
  const LinuxFileSystem& _files;
  std::unique_ptr<Changes> _changes;
};

}  // namespace tallbook
