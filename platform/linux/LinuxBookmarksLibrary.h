#pragma once

#include "platform/DeviceServices.h"
#include "platform/linux/DeviceBus.h"

namespace tallbook {

/// A signal on the device's message bus.
class LinuxBookmarksLibrary final : public BookmarksLibrary {
 public:
  explicit LinuxBookmarksLibrary(DeviceBus& bus) : _bus(bus) {}
  void cloudTabsWereSwitchedOn() override;

 private:
  DeviceBus& _bus;
};

}  // namespace tallbook
