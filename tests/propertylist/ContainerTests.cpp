// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Value.h"

namespace tallbook {
namespace {

std::string keysOf(const DictionaryRef& dictionary) {
  std::string keys;
  for (const auto& [key, value] : *dictionary) keys += key.str();
  return keys;
}

TEST(ADictionary, KeepsInsertionOrderThroughRemovals) {
  const DictionaryRef dictionary =
      Dictionary::make({{"a", 1}, {"b", 2}, {"c", 3}, {"a", 4}, {"d", Value()}});
  EXPECT_EQ(keysOf(dictionary), "abcd");
  EXPECT_EQ((*dictionary)["a"], Value(4));
  EXPECT_TRUE(dictionary->contains("d"));
  dictionary->remove("b");
  dictionary->remove("never there");
  dictionary->set("e", 5);
  dictionary->set("b", 6);
  EXPECT_EQ(keysOf(dictionary), "acdeb");
  EXPECT_EQ(dictionary->size(), 5u);
  EXPECT_FALSE((*dictionary)["f"].boolValue());
}

TEST(ADictionary, StaysQuickAtAMillionKeys) {
  const DictionaryRef dictionary = Dictionary::make();
  constexpr int kKeys = 1'000'000;
  for (int key = 0; key < kKeys; ++key) dictionary->set(std::to_string(key), key);
  for (int key = 0; key < kKeys; key += 2) dictionary->remove(std::to_string(key));
  EXPECT_EQ(dictionary->size(), kKeys / 2u);
  for (int key = 1; key < kKeys; key += 2) {
    ASSERT_EQ((*dictionary)[std::to_string(key)].integerValue(), key);
  }
  EXPECT_EQ(dictionary->begin()->key, "1");
}

TEST(ACopy, IsIndependentAtItsTopLevelOnly) {
  const ArrayRef nested = Array::make({1});
  const DictionaryRef first = Dictionary::make({{"k", "v"}, {"nested", nested}});
  const DictionaryRef second = first->mutableCopy();
  EXPECT_TRUE(second->sharesStorageWith(*first));
  second->set("k", "w");
  first->remove("nested");
  nested->append(2);
  EXPECT_EQ((*first)["k"], Value("v"));
  EXPECT_EQ((*second)["nested"].array(), nested);
  EXPECT_EQ(nested->size(), 2u);
}

TEST(AFrozenCopy, NeverChanges) {
  const ArrayRef nested = Array::make({1});
  const DictionaryRef live = Dictionary::make({{"nested", nested}});
  const DictionaryRef frozen = live->frozenCopy();
  nested->append(2);
  EXPECT_EQ((*frozen)["nested"], Value(Array::make({1})));
  EXPECT_THROW(frozen->set("k", 1), InternalConsistencyFailure);
  EXPECT_THROW(frozen->remove("nested"), InternalConsistencyFailure);
  EXPECT_THROW((*frozen)["nested"].array()->append(3), InternalConsistencyFailure);
  EXPECT_EQ(frozen->frozenCopy(), frozen);

  const DictionaryRef thawed = frozen->mutableCopy();
  EXPECT_TRUE(thawed->frozenCopy()->sharesStorageWith(*frozen));
  thawed->set("k", 1);
  EXPECT_FALSE(frozen->contains("k"));
}

TEST(Equality, IsByContentAndKind) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(Value(nan), Value(nan));
  EXPECT_FALSE(Value(1) == Value(1.0));
  EXPECT_FALSE(Value(1) == Value(true));
  EXPECT_FALSE(Value(-1) == Value(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(Value(7u), Value(7));
  EXPECT_FALSE(Value("7") == Value(Data("7")));
  EXPECT_EQ(Value(Dictionary::make({{"a", 1}, {"b", Array::make({2})}})),
            Value(Dictionary::make({{"b", Array::make({2})}, {"a", 1}})));
  EXPECT_FALSE(Value(Dictionary::make({{"a", Value()}})) ==
               Value(Dictionary::make({{"b", Value()}})));
}

TEST(TypedReads, AnswerAbsentForOtherKinds) {
  for (const Value& value :
       {Value(), Value("12"), Value(Data("12")), Value(Array::make({1})), Value(Date{1})}) {
    EXPECT_EQ(value.integerValue(), 0);
    EXPECT_EQ(value.realValue(), 0);
    EXPECT_FALSE(value.boolValue());
    EXPECT_FALSE(value.dictionary());
    EXPECT_FALSE(value.uid());
  }
  EXPECT_EQ(Value(-2.9).integerValue(), -2);
  EXPECT_EQ(Value(1e300).integerValue(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Value(std::numeric_limits<double>::quiet_NaN()).integerValue(), 0);
  EXPECT_EQ(Value(-1e300).integerValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Value(-3).realValue(), -3);
  EXPECT_EQ(Value(~std::uint64_t{0}).realValue(), 18446744073709551616.0);
  EXPECT_EQ(Value(true).integerValue(), 1);
  EXPECT_TRUE(Value(0.5).boolValue());
  EXPECT_FALSE(Value(4).string());
}

// A chain this deep ends the process where anything follows it by recursion.
TEST(ADeepTree, IsDroppedComparedAndDescribedWithoutRecursionThroughIt) {
  const auto chain = [] {
    Value value;
    for (int depth = 0; depth < 200'000; ++depth) value = Array::make({value});
    return value;
  };
  const Value first = chain();
  const Value second = chain();
  EXPECT_NO_FATAL_FAILURE(static_cast<void>(first == second));
  EXPECT_TRUE(first.description().find("...") != std::string::npos);
  EXPECT_THROW(static_cast<void>(first.frozenCopy()), InternalConsistencyFailure);
}

TEST(ATreeThatUnfoldsWithoutEnd, IsNeitherCopiedNorDescribedWhole) {
  const ArrayRef cycle = Array::make();
  cycle->append(cycle);
  cycle->append(cycle);
  ArrayRef folded = Array::make();
  for (int level = 0; level < 40; ++level) folded = Array::make({folded, folded});
  for (const ArrayRef& tree : {cycle, folded}) {
    EXPECT_NE(Value(tree).description().find("..."), std::string::npos);
    EXPECT_THROW(static_cast<void>(tree->frozenCopy()), InternalConsistencyFailure);
  }
  cycle->removeAllEqual(cycle);
}

TEST(ADescription, IsOneLineInStoredOrder) {
  const Value value = Dictionary::make({{"b", Array::make({1, -2, 0.5, true, Value()})},
                                        {"a", "line\n\"quoted\""},
                                        {"d", Data(std::string_view("\0\xff", 2))},
                                        {"t", Date{0}},
                                        {"u", std::numeric_limits<std::uint64_t>::max()}});
  const std::string text = value.description();
  EXPECT_EQ(text.find('\n'), std::string::npos);
  EXPECT_LT(text.find("\"b\""), text.find("\"a\""));
  for (const char* part : {"[1, -2, 0.5, true, null]", "<00ff>", "2001-01-01T00:00:00Z",
                           "18446744073709551615", "\\\"quoted\\\""}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
  }
}

TEST(ADescription, IsBoundedByItsLengthAndSaysWhatItLeavesOut) {
  constexpr std::size_t kOneValue = 65536;
  constexpr std::size_t kInAll = 1048576;
  const String text = std::string(kInAll, 't');
  std::string accents;
  while (accents.size() < kInAll) accents += "\u00e9";
  ArrayRef folded = Array::make({text});
  for (int level = 0; level < 40; ++level) folded = Array::make({folded, folded});
  const struct {
    const char* what;
    Value value;
    std::size_t mostBytes;
    const char* leftOut;
  } rows[] = {
      {"a text", text, kOneValue, "t\"... (983041 bytes more)"},
      {"control characters", std::string(kInAll, '\n'), kOneValue, "\\x0a\"... ("},
      {"characters of two bytes", "x" + accents, kOneValue, "\u00e9\"... ("},
      {"no Unicode text", std::string(kInAll, '\x80'), kOneValue, "\"... (98304"},
      {"data", Data(text.view()), kOneValue, "74>... (1015808 bytes more)"},
      {"a key", Dictionary::make({{text, 1}}), kOneValue, "t\"... (983041 bytes more): 1}"},
      {"one text shared", Array::make(std::vector<Value>(1000, text)), kInAll, " more)]"},
      {"many numbers", Array::make(std::vector<Value>(kInAll, 1)), kInAll, "1, ... (699051 more)]"},
      {"arrays shared", folded, kInAll, "... (1 more)]"},
  };
  for (const auto& [what, value, mostBytes, leftOut] : rows) {
    const std::string description = value.description();
    EXPECT_LE(description.size(), mostBytes + 1024) << what;
    EXPECT_NE(description.find(leftOut, description.size() - 1024), std::string::npos)
        << what << " ends in " << description.substr(description.size() - 60);
  }
}

}  // namespace
}  // namespace tallbook
