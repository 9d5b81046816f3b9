// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/FittedText.h"

#include <cwchar>

namespace tallbook::tool {
namespace {

constexpr std::string_view kLeftOut = "…";

struct Character {
  std::size_t bytes;
  std::size_t width;
};

/// The first character of a text; a byte that begins none counts as one.
Character firstOf(std::string_view text) {
  wchar_t code = 0;
  std::mbstate_t state{};
  const std::size_t length = std::mbrtowc(&code, text.data(), text.size(), &state);
  if (length == 0 || length > text.size()) return {1, 1};
  const int width = ::wcwidth(code);
  return {length, width < 0 ? 1 : static_cast<std::size_t>(width)};
}

/// The beginning that fits in so many columns.
std::string_view beginning(std::string_view text, std::size_t width) {
  std::size_t end = 0;
  for (std::size_t used = 0; end < text.size();) {
    const Character next = firstOf(text.substr(end));
    used += next.width;
    if (used > width) break;
    end += next.bytes;
  }
  return text.substr(0, end);
}

std::string_view ending(std::string_view text, std::size_t width) {
  for (std::size_t left = widthOf(text); left > width;) {
    const Character next = firstOf(text);
    left -= next.width;
    text.remove_prefix(next.bytes);
  }
  return text;
}

std::string withoutMiddle(std::string_view text, std::size_t width, std::size_t widthOfEnd) {
  if (widthOf(text) <= width) return std::string(text);
  std::string result(beginning(text, width - widthOfEnd - 1));
  return result.append(kLeftOut).append(ending(text, widthOfEnd));
}

std::string broken(std::string_view text, std::size_t width) {
  std::string lines;
  for (;;) {
    std::string_view line = beginning(text, width);
    if (line.size() == text.size()) return lines.append(line);
    // After a comma, unless that leaves most of the line empty; a space at its end needs no room.
    std::size_t end = line.rfind(',') + 1;
    if (end < line.size() / 2) end = text.substr(0, line.size() + 1).rfind(' ');
    if (end > 0 && end < line.size()) line = text.substr(0, end);
    lines.append(line).append("\n");
    text.remove_prefix(line.size());
    if (text.starts_with(' ')) text.remove_prefix(1);
  }
}

}  // namespace

std::size_t widthOf(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const Character next = firstOf(text);
    width += next.width;
    text.remove_prefix(next.bytes);
  }
  return width;
}

std::string fitted(const std::string& text, Fit fit, std::size_t width) {
  if (fit == Fit::Whole) return text;
  if (fit == Fit::Break) return broken(text, width);
  return withoutMiddle(text, width, fit == Fit::Middle ? 4 : 0);
}

}  // namespace tallbook::tool
