// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <mutex>

#include "platform/WellKnownDirectories.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// The device's folders below its root; the running system's own for an empty root.
class LinuxDirectories final : public WellKnownDirectories {
 public:
  explicit LinuxDirectories(const DeviceRoot& root) : _root(root) {}

  std::string systemRoot() const override { return _root.path(); }
  std::string mobileHome() const override;
  std::string sharedResources() const override { return _root.path() + "/var/mobile"; }
  std::string mailData() const override { return mobileHome() + "/Library/Mail"; }

 private:
  const DeviceRoot& _root;
  mutable std::mutex _asking;
  mutable std::string _home;  // empty until it was asked for
};

}  // namespace tallbook
