// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/MessageBus.h"
#include "platform/Preferences.h"
#include "platform/WellKnownDirectories.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// Property lists in the preferences folder of "mobile", one a domain; notices are signals on the
/// device's message bus.
class LinuxPreferences final : public Preferences {
 public:
  LinuxPreferences(const DeviceRoot& root, const WellKnownDirectories& directories, MessageBus& bus)
      : _root(root), _directories(directories), _bus(bus) {}

  Value valueForKey(std::string_view key, std::string_view domain) override;
  void postChangedNotice(std::string_view applicationIdentifier, std::string_view key) override;

 private:
  const DeviceRoot& _root;
  const WellKnownDirectories& _directories;
  MessageBus& _bus;
};

}  // namespace tallbook
