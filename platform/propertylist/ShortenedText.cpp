// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/ScalarText.h"

namespace tallbook {

std::string shortened(std::string_view text) {
  constexpr std::size_t kMost = 200;
  if (text.size() <= kMost) return std::string(text);
  std::size_t end = kMost;
  while (end > 0 && (text[end] & 0xC0) == 0x80) --end;  // not inside a character
  return std::string(text.substr(0, end)) + "...";
}

}  // namespace tallbook
