#pragma once

#include <initializer_list>
#include <string>

#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// The message bus of the device, for one-way notices: the running system's bus (else the user's)
/// for an empty root, else the bus that listens at run/dbus/system_bus_socket below the root. A
/// tree in which no bus runs hears nothing, and neither does the machine around it. A mute one
/// sends nothing.
class DeviceBus {
 public:
  struct Signal {
    const char* path;
    const char* interface;
    const char* member;
  };

  explicit DeviceBus(const DeviceRoot& root, bool isMute = false) : _root(root), _isMute(isMute) {}

  /// Sends the signal with string arguments, over a connection of its own, and waits at most a
  /// second until the bus has it. Failures are not reported: a notice has no receipt.
  void emit(const Signal& signal, std::initializer_list<std::string> arguments) const;

 private:
  const DeviceRoot& _root;
  bool _isMute;
};

}  // namespace tallbook
