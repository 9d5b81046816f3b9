// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tallbook::tool {

/// Whether the texts differ in nothing but the capitals of ASCII.
bool isSameWord(std::string_view a, std::string_view b);
/// Whether the text begins with the other, whatever their capitals.
bool beginsWith(std::string_view text, std::string_view beginning);

/// "; did you mean Work?" for the candidate that the word may be a misspelling of, by its least
/// number of single-character edits (Levenshtein's distance); empty where none is near.
std::string adviceOnMisspelt(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace tallbook::tool
