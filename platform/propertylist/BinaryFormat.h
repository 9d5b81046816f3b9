// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// What the binary encoding's reader and writer must agree on. A file is the magic, the objects,
/// the table of the objects' offsets, and the trailer. An object starts with a marker: its kind in
/// the high half, in the low half a size or, where that is kSizeFollows, the announcement that an
/// integer object with the size comes next. Numbers have their highest byte first.
namespace tallbook::binaryformat {

inline constexpr std::string_view kMagic = "bplist00";
inline constexpr std::size_t kTrailerSize = 32;

/// Where the trailer's fields lie in it; what lies before them is zero.
inline constexpr std::size_t kOffsetSizeAt = 6;
inline constexpr std::size_t kReferenceSizeAt = 7;
inline constexpr std::size_t kObjectCountAt = 8;
inline constexpr std::size_t kTopObjectAt = 16;
inline constexpr std::size_t kOffsetTableAt = 24;

inline constexpr std::uint8_t kNull = 0x00;
inline constexpr std::uint8_t kFalse = 0x08;
inline constexpr std::uint8_t kTrue = 0x09;
inline constexpr std::uint8_t kReal32 = 0x22;
inline constexpr std::uint8_t kReal64 = 0x23;
inline constexpr std::uint8_t kDate = 0x33;

/// The high halves of markers with a size.
enum Family : std::uint8_t {
  kSimple = 0x0,
  kInteger = 0x1,  ///< of 2^size bytes
  kReal = 0x2,     ///< of 2^size bytes
  kDates = 0x3,
  kData = 0x4,
  kASCII = 0x5,
  kUTF16 = 0x6,  ///< of `size` code units
  kUID = 0x8,    ///< of size + 1 bytes
  kArray = 0xa,
  kDictionary = 0xd  ///< of `size` key references and then as many value references
};
inline constexpr std::uint8_t kSizeFollows = 0xf;

/// Reads a number of 1 to 8 bytes; there must be 8 readable bytes in any case.
inline std::uint64_t readNumber(const char* at, std::size_t size) noexcept {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof word);
  if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
  return word >> (64 - 8 * size);
}

/// Writes the lowest 1 to 8 bytes of a number; answers the end of what was written. There must be
/// room for 8 bytes in any case.
inline char* writeNumber(std::uint64_t number, std::size_t size, char* to) noexcept {
  std::uint64_t word = number << (64 - 8 * size);
  if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
  std::memcpy(to, &word, sizeof word);
  return to + size;
}

}  // namespace tallbook::binaryformat
