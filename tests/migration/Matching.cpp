// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/migration/Matching.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Vocabulary.h"

namespace tallbook::test {
namespace {

bool isUUID(const std::string& text) {
  std::string form = text;
  for (char& character : form) {
    if (std::string_view("0123456789ABCDEF").find(character) != std::string_view::npos) {
      character = 'X';
    }
  }
  return form == "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";
}

/// Compares and remembers which UUID each name stands for.
class Matcher {
 public:
  bool value(const Value& expected, const Value& actual) {
    if (const auto array = expected.array()) return this->array(*array, actual.array());
    if (const auto entries = expected.dictionary())
      return dictionary(*entries, actual.dictionary());
    const std::string text = expected.string().str();
    return text.starts_with("{UUID") ? uuid(text, actual.string().str()) : expected == actual;
  }

 private:
  bool array(const Array& expected, const ArrayRef& actual) {
    if (!actual || actual->size() != expected.size()) return false;
    for (std::size_t index = 0; index < expected.size(); ++index) {
      if (!value(expected[index], (*actual)[index])) return false;
    }
    return true;
  }

  bool dictionary(const Dictionary& expected, const DictionaryRef& actual) {
    if (!actual || actual->size() != expected.size()) return false;
    return std::all_of(expected.begin(), expected.end(), [&](const Dictionary::Entry& entry) {
      const Value* found = actual->find(entry.key.view());
      if (!found) return false;
      return entry.key == kAccountEnabledDataclasses ? sorted(entry.value) == sorted(*found)
                                                     : value(entry.value, *found);
    });
  }

  bool uuid(const std::string& name, const std::string& actual) {
    const auto [known, isNew] = _uuids.emplace(name, actual);
    return isNew ? isUUID(actual) && _taken.insert(actual).second : known->second == actual;
  }

  static std::vector<std::string> sorted(const Value& list) {
    std::vector<std::string> texts;
    const ArrayRef array = list.array();
    if (!array) return {"no list: " + list.description()};
    for (const Value& element : *array) texts.push_back(element.description());
    std::ranges::sort(texts);
    return texts;
  }

  std::map<std::string, std::string> _uuids;
  std::set<std::string> _taken;
};

// An array's elements on a line each, so that the one that differs is seen.
std::string lines(const Value& value) {
  const ArrayRef array = value.array();
  if (!array) return "\n  " + value.description();
  std::string text;
  for (const Value& element : *array) text += "\n  " + element.description();
  return text;
}

}  // namespace

::testing::AssertionResult matches(const Value& expected, const Value& actual) {
  if (Matcher().value(expected, actual)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "expected" << lines(expected) << "\nbut got" << lines(actual);
}

}  // namespace tallbook::test
