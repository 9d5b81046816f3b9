// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>
#include <string>
#include <unordered_set>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook {
namespace {

ArrayRef numbers() {
  return Array::make({1, 2, 3});
}

TEST(AReference, IsReadLikeItsContainer) {
  std::int64_t sum = 0;
  for (const Value& number : numbers()) sum += number.integerValue();
  EXPECT_EQ(sum, 6);
  EXPECT_EQ(numbers().size(), 3u);
  EXPECT_FALSE(numbers().empty());
  const Value& kept = numbers()[1];
  EXPECT_EQ(kept, Value(2));

  const DictionaryRef dictionary = Dictionary::make({{"a", 1}, {"b", Array::make({2})}});
  dictionary->remove("a");
  EXPECT_EQ(dictionary.size(), 1u);
  EXPECT_EQ(dictionary.begin()->key, "b");
  EXPECT_EQ(&dictionary["b"], dictionary->find("b"));
  EXPECT_EQ(dictionary["b"].array()[0], Value(2));
  EXPECT_TRUE(dictionary["a"].isNull());
}

TEST(ANullReference, IsEmpty) {
  for (const Value& value : ArrayRef()) FAIL() << value.description();
  for (const auto& [key, value] : Value(1).dictionary()) FAIL() << key << value.description();
  const DictionaryRef none;
  EXPECT_EQ(none.size(), 0u);
  EXPECT_TRUE(none.empty());
  EXPECT_TRUE(none.begin() == none.end());
  EXPECT_TRUE(none["a"].dictionary()["b"].isNull());
}

TEST(Strings, AreOrderedByBytesAfterNull) {
  const std::vector<String> ordered{nullptr, "", "A", "AB", "B", "\u00e9", std::string(1, '\xff')};
  for (std::size_t a = 0; a < ordered.size(); ++a) {
    for (std::size_t b = 0; b < ordered.size(); ++b) {
      SCOPED_TRACE(std::to_string(a) + " and " + std::to_string(b));
      EXPECT_EQ(ordered[a] <=> ordered[b], a <=> b);
      EXPECT_EQ(ordered[a] == ordered[b], a == b);
      if (!ordered[b]) continue;
      EXPECT_EQ(ordered[a] <=> ordered[b].str(), a <=> b) << "a text";
      EXPECT_EQ(ordered[a] == ordered[b].str(), a == b) << "a text";
    }
  }
}

TEST(Strings, AreFoundInTablesAndWrittenToStreams) {
  const std::unordered_set<String> table{"a", nullptr, "b", "a", ""};
  EXPECT_EQ(table.size(), 4u);
  EXPECT_TRUE(table.contains(std::string("b")));

  std::ostringstream out;
  out << String("a") << std::setw(3) << String("b") << String() << '.';
  EXPECT_EQ(out.str(), "a  b.");
}

}  // namespace
}  // namespace tallbook
