// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/UnicodeText.h"

#include <cstdint>
#include <cstring>

namespace tallbook {
namespace {

constexpr char32_t kNoCharacter = UINT32_MAX;

std::uint8_t byteAt(std::string_view bytes, std::size_t at) noexcept {
  return static_cast<std::uint8_t>(bytes[at]);
}

/// Takes a character off the front of the text; kNoCharacter, and nothing taken, where none starts.
char32_t nextUTF8(std::string_view& text) noexcept {
  const std::uint8_t lead = byteAt(text, 0);
  if (lead < 0x80) {
    text.remove_prefix(1);
    return lead;
  }
  const std::size_t size = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || text.size() < size) return kNoCharacter;
  char32_t character = lead & (0x7fU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byteAt(text, i) & 0xc0) != 0x80) return kNoCharacter;
    character = character << 6 | (byteAt(text, i) & 0x3fU);
  }
  const bool isOverlong = (size == 3 && character < 0x800) || (size == 4 && character < 0x10000);
  const bool isSurrogate = character >= 0xd800 && character < 0xe000;
  if (isOverlong || isSurrogate || character > 0x10ffff) return kNoCharacter;
  text.remove_prefix(size);
  return character;
}

/// The same for UTF-16 of an even number of bytes.
char32_t nextUTF16(std::string_view& text) noexcept {
  const auto unit = [&text](std::size_t at) -> char32_t {
    return byteAt(text, at) * 256U + byteAt(text, at + 1);
  };
  char32_t character = unit(0);
  std::size_t size = 2;
  if (character >= 0xd800 && character < 0xe000) {
    if (character >= 0xdc00 || text.size() < 4) return kNoCharacter;
    const char32_t low = unit(2);
    if (low < 0xdc00 || low >= 0xe000) return kNoCharacter;
    character = 0x10000 + ((character - 0xd800) << 10) + (low - 0xdc00);
    size = 4;
  }
  text.remove_prefix(size);
  return character;
}

std::size_t utf8Size(char32_t character) noexcept {
  return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

char* writeUTF8(char32_t character, char* to) noexcept {
  const std::size_t size = utf8Size(character);
  if (size == 1) {
    *to = static_cast<char>(character);
  } else {
    for (std::size_t i = size - 1; i > 0; --i, character >>= 6) {
      to[i] = static_cast<char>(0x80 | (character & 0x3f));
    }
    *to = static_cast<char>((0xf00U >> size & 0xf0) | character);
  }
  return to + size;
}

char* writeUnit(char32_t unit, char* to) noexcept {
  *to++ = static_cast<char>(unit >> 8);
  *to++ = static_cast<char>(unit);
  return to;
}

}  // namespace

bool isASCII(std::string_view bytes) noexcept {
  const auto word = [&](std::size_t at) {
    std::uint64_t eight;
    std::memcpy(&eight, bytes.data() + at, sizeof eight);
    return eight;
  };
  std::uint64_t seen = 0;
  if (bytes.size() >= sizeof seen) {
    // The last word may overlap the one before.
    const std::size_t last = bytes.size() - sizeof seen;
    for (std::size_t at = 0; at < last; at += sizeof seen) seen |= word(at);
    seen |= word(last);
  } else {
    for (std::size_t at = 0; at < bytes.size(); ++at) seen |= byteAt(bytes, at);
  }
  return (seen & 0x8080808080808080) == 0;
}

std::optional<std::size_t> utf16Length(std::string_view utf8) noexcept {
  std::size_t length = 0;
  while (!utf8.empty()) {
    const char32_t character = nextUTF8(utf8);
    if (character == kNoCharacter) return std::nullopt;
    length += character < 0x10000 ? 1 : 2;
  }
  return length;
}

char* writeUTF16(std::string_view utf8, char* to) noexcept {
  while (!utf8.empty()) {
    const char32_t character = nextUTF8(utf8);
    if (character < 0x10000) {
      to = writeUnit(character, to);
    } else {
      to = writeUnit(0xd800 + ((character - 0x10000) >> 10), to);
      to = writeUnit(0xdc00 + (character & 0x3ff), to);
    }
  }
  return to;
}

String stringFromUTF16(std::string_view bytes) {
  std::size_t size = 0;
  for (std::string_view rest = bytes; !rest.empty();) {
    const char32_t character = nextUTF16(rest);
    if (character == kNoCharacter) return nullptr;
    size += utf8Size(character);
  }
  return String(Blob::make(size, [bytes](char* to) {
    for (std::string_view rest = bytes; !rest.empty();) to = writeUTF8(nextUTF16(rest), to);
  }));
}

}  // namespace tallbook
