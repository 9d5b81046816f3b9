#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// The date as ISO 8601 in UTC, with as many digits of a second as it needs up to nine; nullopt
/// where that would not be the same date bit for bit, or for a year outside 1 to 9999.
std::optional<std::string> isoText(Date date);
/// The date without its fraction of a second; nullopt for a year outside 1 to 9999.
std::optional<std::string> isoTextOfWholeSecond(Date date);
/// "2026-01-31T12:00:00Z", "2026-01-31T12:00:00.25Z" or "2026-01-31"; nullopt for other texts.
std::optional<Date> dateFromISOText(std::string_view text);

}  // namespace tallbook::tool
