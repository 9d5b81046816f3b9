// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "tallbook/LibraryLog.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// Writes the text that `message()` makes to the library log, in the name of `operation`, a full
/// operation name such as "-[AccountsManager insertAccount:]". `message` is not called while nobody
/// listens. `line` is the caller's own and not to be given.
///
/// The name carries the operation's category: "(MigrationSupport)" for the operations under that
/// heading of their class, "(Internal)" for every other one that begins with an underscore.
// The compilers' builtin, because clang 14 has no std::source_location.
template <class MakeMessage>
void logMessage(std::string_view operation, MakeMessage&& message,
                unsigned line = static_cast<unsigned>(__builtin_LINE())) {
  LibraryLog* log = _TBLogSystem();
  if (log->isEnabled()) log->write(operation, line, std::forward<MakeMessage>(message)());
}

/// A string as messages show it: a null one is "(null)".
inline std::string_view shown(const String& text) {
  return text ? text.view() : "(null)";
}
/// A value as messages show it: a string bare, null as "(null)", the others by their description.
inline std::string shown(const Value& value) {
  if (const auto text = value.stringView()) return std::string(*text);
  return value.isNull() ? "(null)" : value.description();
}

}  // namespace tallbook
