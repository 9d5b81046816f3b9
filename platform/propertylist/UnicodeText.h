// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "tallbook/String.h"

namespace tallbook {

bool isASCII(std::string_view bytes) noexcept;

/// How many UTF-16 code units the text takes; nullopt when it is not UTF-8.
std::optional<std::size_t> utf16Length(std::string_view utf8) noexcept;

/// Writes valid UTF-8 as UTF-16, the higher byte of each unit first; answers the end of what was
/// written.
char* writeUTF16(std::string_view utf8, char* to) noexcept;

/// The text in UTF-8 of whole UTF-16 code units, the higher byte first; null when a surrogate
/// stands alone.
String stringFromUTF16(std::string_view bytes);

}  // namespace tallbook
