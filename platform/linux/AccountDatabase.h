// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// The device's user and group accounts: the running system's own database for an empty root, else
/// the files etc/passwd and etc/group below the root, read afresh at every question.
class AccountDatabase {
 public:
  explicit AccountDatabase(const DeviceRoot& root) : _root(root) {}

  // Each is nullopt, with `error`, where there is no such name, which is `unknownAccount` or
  // `unknownGroup`, or where the database cannot be asked.

  std::optional<uid_t> userNamed(const std::string& name, std::error_code& error) const;
  std::optional<gid_t> groupNamed(const std::string& name, std::error_code& error) const;
  /// The user's home as the database has it, the root not put before it.
  std::optional<std::string> homeOf(const std::string& name, std::error_code& error) const;

 private:
  const DeviceRoot& _root;
};

}  // namespace tallbook
