// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/MessageBus.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// The running system's bus (else the user's) for an empty root, else the bus that listens at
/// run/dbus/system_bus_socket below the root. A tree in which no bus runs hears nothing, and
/// neither does the machine around it. A mute one sends nothing.
class DeviceBus final : public MessageBus {
 public:
  explicit DeviceBus(const DeviceRoot& root, bool isMute = false) : _root(root), _isMute(isMute) {}

  bool emit(const Signal& signal, const std::vector<Arguments>& each) override;

 private:
  const DeviceRoot& _root;
  bool _isMute;
};

}  // namespace tallbook
