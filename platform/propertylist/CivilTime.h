#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tallbook/Value.h"

namespace tallbook {

/// The date of "YYYY-MM-DDTHH:MM:SSZ" (ISO 8601 in UTC; the year may have a sign or more digits,
/// the seconds a fraction); nullopt for every other text.
std::optional<Date> dateFromISO8601(std::string_view text);

/// The date in the same form; seconds since 2001 where the calendar has no such year.
std::string iso8601(Date date);

}  // namespace tallbook
