// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tallbook::tool {

/// How a text gives way to a terminal that is too narrow, the texts that lose least first.
enum class Fit {
  Whole,   ///< not at all
  Middle,  ///< by its middle, as "6f1c22ab…90d1": its beginning names it
  Break,   ///< by going on in the next line, after a comma where it has one
  Cut      ///< by its end
};

/// The columns that a text without control characters takes. The process's characters are UTF-8.
std::size_t widthOf(std::string_view text);
/// The text in at most so many columns, which are no fewer than 8. Lines of a broken one but the
/// last end with a line feed.
std::string fitted(const std::string& text, Fit fit, std::size_t width);

}  // namespace tallbook::tool
