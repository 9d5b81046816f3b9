// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/FileSystem.h"
#include "platform/linux/AccountDatabase.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// The kernel's files below a device's root.
class LinuxFileSystem final : public FileSystem {
 public:
  explicit LinuxFileSystem(const DeviceRoot& root) : _root(root), _accounts(root) {}

  const AccountDatabase& accounts() const noexcept { return _accounts; }

  std::string readFile(const std::string& path, std::error_code& error) const override;
  std::unique_ptr<Folder> openFolder(const std::string& path,
                                     std::error_code& error) const override;
  std::error_code createDirectories(const std::string& path, unsigned mode) override;

 private:
  const DeviceRoot& _root;
  AccountDatabase _accounts;
};

}  // namespace tallbook
