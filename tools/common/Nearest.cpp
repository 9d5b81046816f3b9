// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/Nearest.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tallbook::tool {
namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

bool isSameWord(std::string_view a, std::string_view b) {
  return a.size() == b.size() && beginsWith(a, b);
}

bool beginsWith(std::string_view text, std::string_view beginning) {
  const auto isSame = [](char a, char b) { return lower(a) == lower(b); };
  return text.size() >= beginning.size() &&
         std::equal(beginning.begin(), beginning.end(), text.begin(), isSame);
}

std::string adviceOnMisspelt(std::string_view word, const std::vector<std::string>& candidates) {
  // Longer words are not looked at: the work grows with the product of the lengths.
  constexpr std::size_t kLongest = 100;
  std::string nearest;
  std::size_t least = word.size() > kLongest ? 0 : word.size() / 3 + 2;
  for (const std::string& candidate : candidates) {
    if (candidate.size() > kLongest) continue;
    const std::size_t edits = distance(word, candidate);
    if (edits >= least) continue;
    least = edits;
    nearest = candidate;
  }
  return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

}  // namespace tallbook::tool
