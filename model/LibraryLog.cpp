// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/LibraryLog.h"

#include <string>

#include "platform/Platform.h"

namespace tallbook {

bool LibraryLog::isEnabled() const {
  return Platform::current().systemLog().hasListener();
}

void LibraryLog::write(std::string_view operation, unsigned line, std::string_view message) {
  SystemLog& log = Platform::current().systemLog();
  if (!log.hasListener()) return;
  std::string text(operation);
  text.append(" (").append(std::to_string(line)).append(") \"").append(message).append("\"");
  log.write("com.orvane.tallbook", "log", onOneLine(text));
}

}  // namespace tallbook

tallbook::LibraryLog* _TBLogSystem() {
  static tallbook::LibraryLog log;
  return &log;
}
