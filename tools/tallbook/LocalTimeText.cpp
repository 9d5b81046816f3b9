#include "tools/tallbook/LocalTimeText.h"

#include <ctime>

namespace tallbook::tool {

std::string localTimeText(std::chrono::sys_time<std::chrono::nanoseconds> instant) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(instant);
  const std::time_t time = seconds.time_since_epoch().count();
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&time));
  return text;
}

}  // namespace tallbook::tool
