// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/FileSystem.h"
#include "platform/linux/AccountDatabase.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// A folder of the kernel, open for as long as the object lives.
class LinuxFolder final : public Folder {
 public:
  /// `path` is where the folder was found; only links out of it are followed by it.
  LinuxFolder(FileDescriptor folder, std::string path, const DeviceRoot& root,
              const AccountDatabase& accounts)
      : _folder(std::move(folder)), _path(std::move(path)), _root(root), _accounts(accounts) {}

  FileContent read(const std::string& name) const override;
  FileLook look(const std::string& name, std::error_code& error) const override;
  std::vector<std::string> names(std::error_code& error) const override;
  std::string freshName() const override;
  std::unique_ptr<NewFile> create(const std::string& name, std::error_code& error) override;
  std::error_code remove(const std::string& name) override;
  std::error_code rename(const std::string& from, const std::string& to) override;
  std::error_code renameToNew(const std::string& from, const std::string& to) override;
  std::error_code link(const std::string& name, Folder& to, const std::string& newName) override;
  std::error_code makeNote(const std::string& name, const std::string& text) override;
  std::string noteText(const std::string& name, std::error_code& error) const override;
  std::unique_ptr<Folder> folder(const std::string& name, std::error_code& error) override;
  std::error_code makeFolder(const std::string& name, const std::string& owner,
                             const std::string& group) override;
  std::error_code flush() override;

  // No error where the system tells of nothing before it is tried.

  /// Why the caller can make nothing here.
  std::error_code obstacleToMaking() const;
  /// Why they cannot replace, remove or rename what has the name, or would have it.
  std::error_code obstacleToTaking(const std::string& name) const;

 private:
  FileDescriptor _folder;
  std::string _path;
  const DeviceRoot& _root;
  const AccountDatabase& _accounts;
};

/// Why the caller cannot give a file of theirs to that account and group.
std::error_code obstacleToGiving(const AccountDatabase& accounts, const std::string& owner,
                                 const std::string& group);

/// Makes a folder in the open one `above`, with exactly the permission bits `mode`.
std::error_code makeFolder(const FileDescriptor& above, const std::string& name, unsigned mode);

}  // namespace tallbook
