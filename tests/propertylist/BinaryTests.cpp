// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/PropertyList.h"

namespace tallbook {
namespace {

using namespace std::string_literals;

std::string bigEndian(std::uint64_t number, int bytes) {
  std::string text;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
    text += shift < 64 ? char(number >> shift & 0xff) : char(0);
  return text;
}

struct Layout {
  int offsetSize = 1;
  int referenceSize = 1;
  std::uint64_t root = 0;
};

// A binary property list of objects that are given as their bytes.
std::string file(const std::vector<std::string>& objects, Layout layout = {}) {
  std::string bytes = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += bigEndian(bytes.size(), layout.offsetSize);
    bytes += object;
  }
  const std::size_t table = bytes.size();
  return bytes + offsets + std::string(6, '\0') + char(layout.offsetSize) +
         char(layout.referenceSize) + bigEndian(objects.size(), 8) + bigEndian(layout.root, 8) +
         bigEndian(table, 8);
}

std::optional<Value> read(const std::string& bytes) {
  return propertyListFromBytes(bytes);
}

TEST(TheBinaryReader, ReadsEveryKindOfEveryWidth) {
  const struct {
    std::string object;
    Value expected;
  } rows[] = {
      {"\x08"s, false},
      {"\x09"s, true},
      {"\0"s, Value()},
      {"\x10\xff"s, 255},
      {"\x11\xff\xff"s, 65535},
      {"\x12\xff\xff\xff\xff"s, 4294967295},
      {"\x13"s + std::string(8, '\xff'), -1},
      {"\x14"s + std::string(8, '\0') + std::string(8, '\xff'),
       std::numeric_limits<std::uint64_t>::max()},
      {"\x14"s + std::string(16, '\xff'), -1},
      {"\x22\x3f\0\0\0"s, 0.5},
      {"\x23\xbf\xe0\0\0\0\0\0\0"s, -0.5},
      {"\x33\xbf\xe0\0\0\0\0\0\0"s, Date{-0.5}},
      {"\x42\0\xff"s, Data("\0\xff"s)},
      {"\x53"s + "a\0b"s, "a\0b"s},
      {"\x5f\x10\x11"s + std::string(17, 'x'), std::string(17, 'x')},
      {"\x62\x00\xe9\x20\xac"s, "é€"},
      {"\x62\xd8\x3d\xde\x00"s, "\U0001F600"},
      {"\x80\x07"s, UID{7}},
      {"\x83\x01\0\0\0"s, UID{1 << 24}},
      {"\xa0"s, Array::make()},
      {"\xd0"s, Dictionary::make()},
  };
  for (const auto& [object, expected] : rows) {
    for (const int size : {1, 2, 3, 8}) {
      const auto value = read(file({object}, {size, size, 0}));
      ASSERT_TRUE(value) << expected.description() << " at " << size;
      EXPECT_EQ(*value, expected);
    }
  }
}

TEST(TheBinaryReader, KeepsTheBitsOfWhatIsNoNumber) {
  const auto value = read(file({"\x22\xff\xa0\0\x01"s}));
  ASSERT_TRUE(value);
  EXPECT_EQ(*value, Value(std::bit_cast<double>(0xfff4000020000000)));
}

TEST(TheBinaryReader, SharesWhatTheFileShares) {
  const auto value = read(file({"\xa2\x01\x01"s, "\xd1\x02\x02"s, "\x51k"s}));
  ASSERT_TRUE(value);
  EXPECT_EQ(value->array()[0].dictionary(), value->array()[1].dictionary());
  EXPECT_TRUE(value->array()->isFrozen());
}

TEST(TheBinaryReader, TakesTheLastOfTwoValuesUnderOneKeyHoweverOftenTheKeysRepeat) {
  const auto value = read(file({"\xa2\x01\x02"s, "\xd2\x03\x04\x05\x06"s, "\xd2\x03\x04\x06\x05"s,
                                "\x51k"s, "\x51k"s, "\x08"s, "\x09"s}));
  ASSERT_TRUE(value);
  EXPECT_EQ(
      *value,
      Value(Array::make({Dictionary::make({{"k", true}}), Dictionary::make({{"k", false}})})));
}

TEST(TheBinaryReader, RefusesWhatIsNoPropertyList) {
  std::vector<std::string> unfolding;
  for (char level = 1; level <= 40; ++level) unfolding.push_back("\xa2"s + level + level);
  unfolding.push_back("\x08"s);
  std::vector<std::string> deep;
  for (int level = 1; level <= 513; ++level) deep.push_back("\xa1"s + bigEndian(level, 2));
  deep.push_back("\x08"s);
  // The root has an array 300 deep, and another one of that depth around the first.
  std::vector<std::string> deepTogether{"\xa2"s + bigEndian(1, 2) + bigEndian(302, 2)};
  for (int level = 2; level <= 301; ++level) deepTogether.push_back("\xa1"s + bigEndian(level, 2));
  deepTogether.push_back("\x08"s);
  for (int level = 303; level <= 602; ++level) {
    deepTogether.push_back("\xa1"s + bigEndian(level < 602 ? level : 1, 2));
  }
  const std::string whole = file({"\x51x"s});
  const std::pair<const char*, std::string> rows[] = {
      {"empty", ""},
      {"another version", "bplist15" + whole.substr(8)},
      {"a cycle", file({"\xa1\x00"s})},
      {"a longer cycle", file({"\xa1\x01"s, "\xd1\x02\x00"s, "\x51k"s})},
      {"unfolding to 2^40 values", file(unfolding)},
      {"nested past the limit", file(deep, {2, 2, 0})},
      {"nested past the limit by sharing", file(deepTogether, {2, 2, 0})},
      {"a number past the end", file({"\x13\x01"s})},
      {"an integer of 32 bytes", file({"\x15"s + std::string(32, '\0')})},
      {"a real of two bytes", file({"\x21"s + std::string(8, '\0')})},
      {"a date of four bytes", file({"\x32"s + std::string(8, '\0')})},
      {"an unknown simple object", file({"\x01"s})},
      {"a reference outside", file({"\xa1\x05"s})},
      {"a root outside", file({"\x08"s}, {1, 1, 9})},
      {"an object past the end", file({"\x5f\x12\x7f\xff\xff\xff"s})},
      {"a length of 2^63", file({"\x4f\x13\x80\0\0\0\0\0\0\0"s})},
      {"a length that is no integer", file({"\x4f\x51\x01"s})},
      {"a key that is no string", file({"\xd1\x01\x01"s, "\x10\x01"s})},
      {"a set", file({"\xc1\x01"s, "\x08"s})},
      {"an unknown marker", file({"\x7f"s})},
      {"ASCII past 127", file({"\x51\xe9"s})},
      {"a lone high surrogate", file({"\x61\xd8\x3d"s})},
      {"a lone low surrogate", file({"\x61\xde\x00"s})},
      {"an integer past 64 bits", file({"\x14"s + "\x01"s + std::string(15, '\0')})},
      {"no offset size", file({"\x08"s}, {0, 1, 0})},
      {"too wide an offset", file({"\x08"s}, {9, 1, 0})},
      {"more objects than bytes", whole.substr(0, whole.size() - 24) + bigEndian(1ull << 60, 8) +
                                      whole.substr(whole.size() - 16)},
  };
  for (const auto& [what, bytes] : rows) {
    std::string problem;
    EXPECT_FALSE(propertyListFromBytes(bytes, &problem)) << what;
    EXPECT_FALSE(problem.empty()) << what;
    EXPECT_EQ(problem.find('\n'), std::string::npos) << what;
  }
}

// An array that refers twice to one that refers twice to one ..., and to `more` at its end.
std::string doubling(char levels, const std::string& more) {
  std::vector<std::string> objects{"\xa2\x01\x02"s, more};
  for (char level = 2; level <= levels; ++level) {
    objects.push_back("\xa2"s + char(level + 1) + char(level + 1));
  }
  objects.push_back("\x08"s);
  return file(objects, {4, 1, 0});
}

// Reading bounds what a save of the same tree writes.
TEST(TheBinaryReader, UnfoldsNoSmallFileIntoALargeOne) {
  const std::string data = "\x4f\x12\x00\x05\x00\x00"s + std::string(0x50000, 'd');
  EXPECT_FALSE(read(doubling(18, "\x08"s)));
  for (const std::string& bytes : {doubling(16, "\x08"s), doubling(18, data)}) {
    const auto value = read(bytes);
    ASSERT_TRUE(value);
    const std::string written = *binaryPropertyList(*value);
    EXPECT_LT(written.size(), 1'000'000 + 8 * bytes.size());
    EXPECT_EQ(read(written), value);
  }
}

TEST(TheBinaryReader, RefusesAFileCutOffAnywhere) {
  const std::string whole = *binaryPropertyList(Dictionary::make(
      {{"Accounts", Array::make({"one", 2, 3.5, Data("four")})}, {"Version", 12}}));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(read(whole.substr(0, length))) << length;
  }
}

TEST(TheBinaryWriter, StoresEachDistinctObjectOnceInTheSmallestWidths) {
  const auto sizeOf = [](std::vector<Value> elements) {
    return binaryPropertyList(Array::make(std::move(elements)))->size();
  };
  // Another reference to a known object is one byte; a new one takes an offset and itself too.
  const std::string text(100, 't');
  EXPECT_EQ(sizeOf({text, String(text)}), sizeOf({text}) + 1);
  EXPECT_EQ(sizeOf({text, Data(text)}), sizeOf({text}) + 1 + 1 + 103);
  EXPECT_EQ(sizeOf({300, 300}), sizeOf({300}) + 1);
  EXPECT_EQ(sizeOf({300, 1}), sizeOf({300}) + 1 + 1 + 2);
  EXPECT_EQ(sizeOf({0.5, Date{0.5}}), sizeOf({0.5}) + 1 + 1 + 9);
  // 256 objects are told apart by one byte, 257 by two, however often they occur.
  const auto referenceSize = [](const std::vector<Value>& elements) {
    const std::string bytes = *binaryPropertyList(Array::make(elements));
    return int{bytes[bytes.size() - 25]};
  };
  std::vector<Value> containers(255, Array::make());
  std::vector<Value> texts;
  for (int number = 0; number < 255; ++number) texts.emplace_back(std::to_string(number));
  texts.emplace_back("0");
  EXPECT_EQ(referenceSize(std::vector<Value>(1000, "the same")), 1);
  for (std::vector<Value>* elements : {&containers, &texts}) {
    EXPECT_EQ(referenceSize(*elements), 1);
    elements->emplace_back(Array::make());
    EXPECT_EQ(referenceSize(*elements), 2);
  }
}

TEST(TheBinaryWriter, DependsOnContentAlone) {
  const String shared = "shared";
  const auto one = Array::make({shared, shared, Dictionary::make({{"k", shared}})});
  const auto other = Array::make({"shared", String("shared"), Dictionary::make({{"k", "shared"}})});
  EXPECT_EQ(binaryPropertyList(one), binaryPropertyList(other->frozenCopy()));
}

// With so many distinct objects the writer looks ahead in dictionaries.
TEST(TheBinaryWriter, StoresEachDistinctObjectOnceHoweverManyThereAre) {
  constexpr int kRecords = 30'000;
  const String longOnes[] = {std::string(5000, 'a'), std::string(5000, 'b')};
  std::vector<Value> records;
  records.reserve(kRecords);
  for (int number = 0; number < kRecords; ++number) {
    const std::string text = "text " + std::to_string(number);
    records.emplace_back(Dictionary::make({{"own", String(text)},
                                           {"shared", String(text)},
                                           {"date", Date{number + 0.5}},
                                           {"long", longOnes[number % 2]}}));
    if (number % 3 == 0) records.emplace_back(number);
  }
  const Value all = Array::make(std::move(records));
  const auto bytes = binaryPropertyList(all);
  ASSERT_TRUE(bytes);
  const auto again = read(*bytes);
  ASSERT_TRUE(again);
  EXPECT_TRUE(*again == all);
  // The array; of each record itself, its text and its date; every third number; four keys; two
  // long texts.
  EXPECT_EQ(bytes->substr(bytes->size() - 24, 8),
            bigEndian(1 + 3 * kRecords + kRecords / 3 + 6, 8));
}

TEST(TheBinaryWriter, TellsATextFromDataOfTheSameBytes) {
  for (const String& text : {String("shared"), String(std::string(5000, 's'))}) {
    for (const Value& tree :
         {Value(Array::make({text, Data(text.blob()), text})),
          Value(Dictionary::make({{"d", Data(text.blob())}, {text, String(text.str())}}))}) {
      const auto bytes = binaryPropertyList(tree);
      const auto again = read(*bytes);
      ASSERT_TRUE(again);
      EXPECT_EQ(*again, tree);
      EXPECT_LT(bytes->size(), 2 * text.view().size() + 200);
    }
  }
}

TEST(TheBinaryWriter, SaysWhatItCannotWrite) {
  const ArrayRef cycle = Array::make();
  cycle->append(cycle);
  for (const Value& value : {Value(cycle), Value("\xff"), Value("\xed\xa0\x80"),
                             Value(Dictionary::make({{"\xc0\x80", 1}}))}) {
    std::string problem;
    EXPECT_FALSE(binaryPropertyList(value, &problem));
    EXPECT_FALSE(problem.empty());
  }
  cycle->remove(0);
}

}  // namespace
}  // namespace tallbook
