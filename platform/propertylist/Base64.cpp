// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cstdint>

#include "tallbook/ScalarText.h"

namespace tallbook {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kWhiteSpace = " \t\r\n";

std::optional<std::uint32_t> sixBits(char digit) {
  if (digit >= 'A' && digit <= 'Z') return digit - 'A';
  if (digit >= 'a' && digit <= 'z') return digit - 'a' + 26;
  if (digit >= '0' && digit <= '9') return digit - '0' + 52;
  if (digit == '+') return 62;
  if (digit == '/') return 63;
  return std::nullopt;
}

}  // namespace

std::optional<std::string> bytesFromBase64(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int digits = 0;
  bool isPadded = false;
  for (const char digit : text) {
    if (kWhiteSpace.find(digit) != std::string_view::npos) continue;
    if (digit == '=') {
      isPadded = true;
      continue;
    }
    const auto six = sixBits(digit);
    if (!six || isPadded) return std::nullopt;
    bits = bits << 6 | *six;
    // Each digit after the first of a group of four completes a byte.
    if (++digits % 4 != 1) bytes += static_cast<char>(bits >> (4 - digits % 4) % 4 * 2);
    if (digits == 4) digits = 0;
  }
  if (digits == 1) return std::nullopt;
  return bytes;
}

std::string base64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::string_view group = bytes.substr(at, 3);
    std::uint32_t bits = 0;
    for (std::size_t index = 0; index < 3; ++index) {
      bits = bits << 8 | (index < group.size() ? static_cast<unsigned char>(group[index]) : 0u);
    }
    for (std::size_t index = 0; index < 4; ++index) {
      const bool isPadding = index > group.size();
      text += isPadding ? '=' : kDigits[bits >> (18 - 6 * index) & 63];
    }
  }
  return text;
}

}  // namespace tallbook
