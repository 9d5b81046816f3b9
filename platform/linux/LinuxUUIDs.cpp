// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxUUIDs.h"

#include <algorithm>
#include <array>
#include <random>
#include <string_view>
#include <unistd.h>

namespace tallbook {
namespace {

using Bytes = std::array<unsigned char, 16>;

// Not the standard library's numbers at once: those may come from the processor alone, and there
// are processors that give the same number for ever after a sleep.
Bytes randomBytes() {
  Bytes bytes;
  if (::getentropy(bytes.data(), bytes.size()) == 0) return bytes;
  std::random_device random;
  std::ranges::generate(bytes, [&] { return static_cast<unsigned char>(random()); });
  return bytes;
}

}  // namespace

String LinuxUUIDs::newUUID() {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  Bytes bytes = randomBytes();
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // the usual variant
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace tallbook
