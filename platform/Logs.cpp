// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/Logs.h"

#include <algorithm>

namespace tallbook {

std::string onOneLine(std::string_view text) {
  constexpr std::string_view kHexadecimal = "0123456789abcdef";
  constexpr std::size_t kMost = std::size_t{1} << 20;
  std::string line;
  line.reserve(std::min(text.size(), kMost));
  for (const char character : text) {
    if (line.size() >= kMost) return line + "...";
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x20 || byte == 0x7f) {
      line += {'\\', 'x', kHexadecimal[byte >> 4], kHexadecimal[byte & 15]};
    } else {
      line += character;
    }
  }
  return line;
}

}  // namespace tallbook
