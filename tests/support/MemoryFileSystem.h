// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/FileSystem.h"

namespace tallbook {

/// Files in memory, with a journal of what was done to them. The root folder "/" is there from the
/// beginning. Every account and group name is known, except "nobody-has-this-name". Time stands
/// still, and an inode that nobody has any more is the next file's: what tells versions apart has
/// to come from the code under test.
class MemoryFileSystem final : public FileSystem {
 public:
  /// All that a disk holds. A copy of it is another disk.
  struct Disk {
    struct Inode {
      FileKind kind = FileKind::Regular;
      std::string bytes;  ///< of a link, what it says
      std::string owner;
      std::int64_t modifiedNanoseconds = 0;
    };
    std::map<std::string, std::uint64_t> inodes{{"/", 1}};  ///< by path
    std::map<std::uint64_t, Inode> contents{{1, {FileKind::Directory, {}, {}, 0}}};
    std::map<std::uint64_t, int> held;  ///< how many have the inode's file open
    unsigned freshNames = 0;
  };
  Disk disk;

  /// Each read and each change that succeeded, in order, as "read PATH", "create PATH",
  /// "write PATH", "giveTo PATH OWNER:GROUP", "finish PATH", "rename FROM -> TO" and so on.
  const std::vector<std::string>& journal() const { return *_journal; }
  void clearJournal() { _journal->clear(); }
  /// Name and group of the file's owner, as "owner:group"; empty when it was never set.
  std::string ownerOf(const std::string& path) const;

  std::string readFile(const std::string& path, std::error_code& error) const override;
  std::unique_ptr<Folder> openFolder(const std::string& path,
                                     std::error_code& error) const override;
  std::error_code createDirectories(const std::string& path, unsigned mode) override;

 private:
  std::shared_ptr<std::vector<std::string>> _journal = std::make_shared<std::vector<std::string>>();
};

}  // namespace tallbook
