#pragma once

#include "platform/DeviceServices.h"

namespace tallbook {

/// libuuid, whose random numbers are the kernel's.
class LinuxUUIDs final : public UUIDSource {
 public:
  String newUUID() override;
};

}  // namespace tallbook
