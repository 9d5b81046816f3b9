// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tallbook/Export.h"
#include "tallbook/Value.h"

namespace tallbook {

// How the property lists' text forms spell their values, for whoever reads or writes such text.

/// A text that is there to recognise something by: the end of one over 200 bytes is "...". Names
/// and identifiers are repeated in every line about their records.
[[nodiscard]] TALLBOOK_EXPORT std::string shortened(std::string_view text);

/// The integer that the whole text spells: decimal, or hexadecimal after "0x", with or without a
/// sign, from -2^63 to 2^64-1; nullopt for every other text.
[[nodiscard]] TALLBOOK_EXPORT std::optional<Value> integerFromText(std::string_view text);

/// The date of "YYYY-MM-DDTHH:MM:SSZ" (ISO 8601 in UTC; the year may have a sign or more digits,
/// the seconds a fraction, and the "Z" may be missing); nullopt for every other text.
[[nodiscard]] TALLBOOK_EXPORT std::optional<Date> dateFromISO8601(std::string_view text);
/// The date in the same form, with up to nine digits of a second where it has a fraction; the text
/// of a number, "... seconds since 2001", where the calendar has no such year.
[[nodiscard]] TALLBOOK_EXPORT std::string iso8601(Date date);

/// The bytes that the text spells in base 64 (RFC 4648), white space passed over; nullopt for a
/// text that is none.
[[nodiscard]] TALLBOOK_EXPORT std::optional<std::string> bytesFromBase64(std::string_view text);
/// The bytes in base 64, padded, on one line.
[[nodiscard]] TALLBOOK_EXPORT std::string base64(std::string_view bytes);

}  // namespace tallbook
