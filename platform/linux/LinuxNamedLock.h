// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <chrono>

#include "platform/NamedLock.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// Advisory locks on files named after the locks in the folder tmp below the root. Users of every
/// account can wait for and take them, unless the device made the file for one of them; the files
/// stay behind, empty.
///
/// A lock cannot be made where something other than a regular file, a symbolic link included, was
/// planted at its path.
class LinuxNamedLock final : public NamedLock {
 public:
  /// `patience` is how long a wait may be before it counts as long.
  explicit LinuxNamedLock(const DeviceRoot& root,
                          std::chrono::milliseconds patience = std::chrono::seconds(1))
      : _root(root), _patience(patience) {}

  std::unique_ptr<LockHold> lock(std::string_view name, const LongWait& longWait,
                                 Deadline deadline) override;

 private:
  const DeviceRoot& _root;
  std::chrono::milliseconds _patience;
};

}  // namespace tallbook
