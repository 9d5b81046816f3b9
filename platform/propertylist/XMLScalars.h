// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

#include "tallbook/Value.h"

namespace tallbook {

/// The values of the XML encoding's elements <integer> (decimal or 0x hexadecimal, all signed and
/// unsigned 64-bit numbers), <real>, <date> (ISO 8601) and <data> (RFC 4648 base 64; white space is
/// passed over), from the text inside. All throw MalformedPropertyList for any other text.
Value integerFromXML(std::string_view text);
Value realFromXML(std::string_view text);
Value dateFromXML(std::string_view text);
Value dataFromXML(std::string_view text);

}  // namespace tallbook
