#pragma once

#include <string>
#include <string_view>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// "Calendars" for "com.orvane.Dataclass.Calendars"; other texts as they are.
std::string shortName(std::string_view dataclass);
/// Short names with commas between them; "none" for an empty list, "not set" for null.
std::string shortNames(const ArrayRef& dataclasses);
/// The dataclass of that full or short name, whatever its capitals. Throws Failure, with the list
/// of them, for others.
String dataclassNamed(std::string_view name);

}  // namespace tallbook::tool
