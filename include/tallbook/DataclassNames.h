// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>

#include "tallbook/Export.h"
#include "tallbook/Value.h"

namespace tallbook {

// The names by which people know dataclasses.

/// "Calendars" for "com.orvane.Dataclass.Calendars"; other texts as they are.
[[nodiscard]] TALLBOOK_EXPORT std::string shortNameOfDataclass(std::string_view dataclass);
/// Short names with commas between them; "none" for an empty list, "not set" for null.
[[nodiscard]] TALLBOOK_EXPORT std::string shortNamesOfDataclasses(const ArrayRef& dataclasses);
/// The dataclass of that full name, or of that short one in any capitals; null where there is none.
[[nodiscard]] TALLBOOK_EXPORT String dataclassNamed(std::string_view name);

}  // namespace tallbook
