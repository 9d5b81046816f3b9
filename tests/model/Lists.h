// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Value.h"

namespace tallbook::test {

/// An array of the words of a text, each a dataclass's short name: "Mail Notes". A word after a
/// "!" stands for itself.
inline ArrayRef dataclasses(const std::string& words) {
  const ArrayRef list = Array::make();
  for (std::size_t at = 0; at < words.size();) {
    const std::size_t end = std::min(words.find(' ', at), words.size());
    const std::string word = words.substr(at, end - at);
    list->append(word[0] == '!' ? word.substr(1) : "com.orvane.Dataclass." + word);
    at = end + 1;
  }
  return list;
}

/// The list's strings with dataclasses shortened, separated by blanks; "null" for no list.
inline std::string words(const ArrayRef& list) {
  constexpr std::string_view prefix = "com.orvane.Dataclass.";
  if (!list) return "null";
  std::string text;
  for (const Value& element : *list) {
    std::string_view word = element.stringView().value_or("?");
    if (word.substr(0, prefix.size()) == prefix) word.remove_prefix(prefix.size());
    text.append(text.empty() ? "" : " ").append(word);
  }
  return text;
}

/// The text of the failure that `act` throws; empty when it throws none.
template <class Act>
std::string failureOf(Act&& act) {
  try {
    act();
    return {};
  } catch (const InternalConsistencyFailure& failure) {
    return failure.what();
  }
}

}  // namespace tallbook::test
