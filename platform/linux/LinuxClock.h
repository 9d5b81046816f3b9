// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/DeviceServices.h"

namespace tallbook {

/// The system's clock in the process's time zone.
class LinuxClock final : public LocalClock {
 public:
  LocalTime now() const override;
  std::chrono::sys_time<std::chrono::nanoseconds> instant() const override;
};

}  // namespace tallbook
