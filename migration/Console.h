// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

#include "platform/Platform.h"

namespace tallbook {

/// Writes one plain line to the process's console log, whatever the text holds.
inline void consoleLog(std::string_view text) {
  Platform::current().consoleLog().write(onOneLine(text));
}

}  // namespace tallbook
