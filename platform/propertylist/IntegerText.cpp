// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <charconv>
#include <cstdint>

#include "tallbook/ScalarText.h"

namespace tallbook {

std::optional<Value> integerFromText(std::string_view text) {
  constexpr std::uint64_t kLowestMagnitude = std::uint64_t{1} << 63;
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  std::uint64_t magnitude = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, magnitude, base);
  if (error != std::errc() || stop != end) return std::nullopt;
  if (!isNegative) return Value(magnitude);
  if (magnitude > kLowestMagnitude) return std::nullopt;
  return Value(static_cast<std::int64_t>(0 - magnitude));
}

}  // namespace tallbook
