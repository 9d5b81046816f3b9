// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "tallbook/Value.h"

#include "tools/common/Output.h"

namespace tallbook::tool {

/// Throws Failure, with line and column, for a text that is no JSON.
JSON jsonFromText(std::string_view text);
/// The value as JSON that `valueFromJSON` makes the same value of, bit for bit. What JSON has no
/// form for becomes an object with one key: {"$date": "2026-01-31T12:00:00Z"} or
/// {"$date": seconds since 2001}, {"$data": base64}, {"$uid": number}, {"$real": "nan"}, and
/// {"$dictionary": {...}} around a dictionary that would be taken for one of these.
JSON jsonFromValue(const Value& value);
/// Throws Failure for a malformed form and for nesting past `kMaximumNesting`.
Value valueFromJSON(const JSON& json);

}  // namespace tallbook::tool
