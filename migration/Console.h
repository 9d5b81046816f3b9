#pragma once

#include <string_view>

#include "platform/Platform.h"

namespace tallbook {

/// Writes one plain line to the process's console log.
inline void consoleLog(std::string_view line) {
  Platform::current().consoleLog().write(line);
}

}  // namespace tallbook
