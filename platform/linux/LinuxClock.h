#pragma once

#include "platform/DeviceServices.h"

namespace tallbook {

/// The system's clock in the process's time zone.
class LinuxClock final : public LocalClock {
 public:
  LocalTime now() const override;
};

}  // namespace tallbook
