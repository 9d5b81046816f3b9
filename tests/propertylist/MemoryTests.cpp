// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <string>

#include "tallbook/PropertyList.h"

#include "tests/support/Work.h"

namespace tallbook {
namespace {

using namespace std::string_literals;

std::string number(std::uint64_t value) {
  std::string bytes;
  for (int shift = 56; shift >= 0; shift -= 8) bytes += char(value >> shift & 0xff);
  return bytes;
}

// Objects and the table of their offsets, of one byte each as all references are.
std::string file(const std::string& objects, const std::string& offsets) {
  return "bplist00" + objects + offsets + std::string(6, '\0') + "\x01\x01" +
         number(offsets.size()) + number(0) + number(8 + objects.size());
}

TEST(TheBinaryReader, AsksForMemoryInProportionToTheFile) {
  constexpr std::size_t kMany = 12'000'000;
  const std::string manySize = "\xaf\x13"s + number(kMany);
  const struct {
    const char* what;
    std::string bytes;
    bool isRead;
  } rows[] = {
      {"offsets of one object", file("\x08"s, std::string(kMany, '\x08')), false},
      {"offsets, and as much between", file(std::string(kMany, '\x08'), std::string(kMany, '\x08')),
       false},
      {"references", file("\x08"s + manySize + std::string(kMany, '\0'), "\x09\x08"s), false},
      {"data", file("\x4f\x13"s + number(kMany) + std::string(kMany, 'd'), "\x08"s), true},
  };
  for (const auto& row : rows) {
    const auto read = [&] {
      EXPECT_EQ(propertyListFromBytes(row.bytes).has_value(), row.isRead) << row.what;
    };
    EXPECT_LT(test::workOf(read, test::allocatedBytes), 4 * row.bytes.size()) << row.what;
  }
}

}  // namespace
}  // namespace tallbook
