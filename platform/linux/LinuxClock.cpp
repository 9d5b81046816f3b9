// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxClock.h"

#include <ctime>

namespace tallbook {

LocalTime LinuxClock::now() const {
  const std::time_t seconds = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&seconds, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
          local.tm_hour,        local.tm_min,     local.tm_sec};
}

std::chrono::sys_time<std::chrono::nanoseconds> LinuxClock::instant() const {
  return std::chrono::system_clock::now();
}

}  // namespace tallbook
