#pragma once

#include <chrono>
#include <string>

namespace tallbook::tool {

/// "2026-01-31 12:00:00", in the device's time zone.
std::string localTimeText(std::chrono::sys_time<std::chrono::nanoseconds> instant);

}  // namespace tallbook::tool
