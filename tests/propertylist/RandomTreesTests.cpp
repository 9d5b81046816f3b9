// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <string>
#include <vector>

#include "tallbook/PropertyList.h"

namespace tallbook {
namespace {

std::string textOf(const std::vector<char32_t>& characters) {
  std::string text;
  for (const char32_t c : characters) {
    if (c < 0x80) {
      text += char(c);
    } else if (c < 0x800) {
      text += {char(0xc0 | c >> 6), char(0x80 | (c & 0x3f))};
    } else if (c < 0x10000) {
      text += {char(0xe0 | c >> 12), char(0x80 | (c >> 6 & 0x3f)), char(0x80 | (c & 0x3f))};
    } else {
      text += {char(0xf0 | c >> 18), char(0x80 | (c >> 12 & 0x3f)), char(0x80 | (c >> 6 & 0x3f)),
               char(0x80 | (c & 0x3f))};
    }
  }
  return text;
}

rc::Gen<std::string> anyText() {
  const auto character =
      rc::gen::oneOf(rc::gen::inRange<char32_t>(0, 0x80), rc::gen::inRange<char32_t>(0x80, 0xd800),
                     rc::gen::inRange<char32_t>(0xe000, 0x110000));
  return rc::gen::map(rc::gen::container<std::vector<char32_t>>(character), textOf);
}

// Random bits: every number, and every NaN among the reals.
rc::Gen<Value> anyScalar() {
  const auto bits = rc::gen::arbitrary<std::uint64_t>();
  return rc::gen::oneOf(
      rc::gen::just(Value()),
      rc::gen::map(rc::gen::arbitrary<bool>(), [](bool b) { return Value(b); }),
      rc::gen::map(rc::gen::arbitrary<std::int64_t>(), [](std::int64_t i) { return Value(i); }),
      rc::gen::map(bits, [](std::uint64_t i) { return Value(i); }),
      rc::gen::map(bits, [](std::uint64_t i) { return Value(std::bit_cast<double>(i)); }),
      rc::gen::map(bits, [](std::uint64_t i) { return Value(Date{std::bit_cast<double>(i)}); }),
      rc::gen::map(bits, [](std::uint64_t i) { return Value(UID{i}); }),
      rc::gen::map(anyText(), [](const std::string& text) { return Value(text); }),
      rc::gen::map(rc::gen::arbitrary<std::string>(),
                   [](const std::string& bytes) { return Value(Data(bytes)); }));
}

Value anyTree(int depth) {
  const int shape = depth == 0 ? 0 : *rc::gen::inRange(0, 3);
  if (shape == 0) return *anyScalar();
  const int size = *rc::gen::inRange(0, 20);
  if (shape == 1) {
    const ArrayRef array = Array::make();
    for (int index = 0; index < size; ++index) array->append(anyTree(depth - 1));
    return array;
  }
  const DictionaryRef dictionary = Dictionary::make();
  for (int index = 0; index < size; ++index) dictionary->set(*anyText(), anyTree(depth - 1));
  return dictionary;
}

RC_GTEST_PROP(AnyTree, SurvivesWritingAndReading, ()) {
  const Value tree = anyTree(2);
  const auto bytes = binaryPropertyList(tree);
  RC_ASSERT(bytes.has_value());
  const auto back = propertyListFromBytes(*bytes);
  RC_ASSERT(back.has_value());
  RC_ASSERT(*back == tree);
  RC_ASSERT(binaryPropertyList(*back) == bytes);
}

// Damage to a real file, which random bytes alone never resemble; what is still read is writable.
RC_GTEST_PROP(AnyDamage, IsRefusedOrReadAsATree, ()) {
  std::string bytes = *binaryPropertyList(anyTree(2));
  for (int hit = *rc::gen::inRange(1, 4); hit > 0; --hit) {
    bytes[*rc::gen::inRange<std::size_t>(0, bytes.size())] = *rc::gen::arbitrary<char>();
  }
  if (const auto value = propertyListFromBytes(bytes)) {
    RC_ASSERT(propertyListFromBytes(*binaryPropertyList(*value)) == value);
  }
}

}  // namespace
}  // namespace tallbook
