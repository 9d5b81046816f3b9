// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "model/UpperCase.h"

#include <algorithm>
#include <cwchar>
#include <locale>
#include <optional>
#include <stdexcept>

namespace tallbook {
namespace {

using Characters = std::codecvt<wchar_t, char, std::mbstate_t>;

/// A locale by name, so that neither the user's language nor a program's own setting counts.
std::optional<std::locale> unicodeLocale() {
  try {
    return std::locale("C.UTF-8");
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

std::optional<std::string> upperCaseIn(const std::locale& locale, std::string_view utf8) {
  const auto& characters = std::use_facet<Characters>(locale);
  std::wstring wide(utf8.size(), L'\0');
  std::mbstate_t state{};
  const char* read = nullptr;
  wchar_t* end = nullptr;
  if (characters.in(state, utf8.data(), utf8.data() + utf8.size(), read, wide.data(),
                    wide.data() + wide.size(), end) != std::codecvt_base::ok) {
    return std::nullopt;
  }
  wide.resize(static_cast<std::size_t>(end - wide.data()));
  std::use_facet<std::ctype<wchar_t>>(locale).toupper(wide.data(), wide.data() + wide.size());

  std::string upper(wide.size() * static_cast<std::size_t>(characters.max_length()), '\0');
  state = {};
  const wchar_t* written = nullptr;
  char* last = nullptr;
  if (characters.out(state, wide.data(), wide.data() + wide.size(), written, upper.data(),
                     upper.data() + upper.size(), last) != std::codecvt_base::ok) {
    return std::nullopt;
  }
  upper.resize(static_cast<std::size_t>(last - upper.data()));
  return upper;
}

}  // namespace

std::string upperCase(std::string_view utf8) {
  static const std::optional<std::locale> locale = unicodeLocale();
  if (locale) {
    if (auto upper = upperCaseIn(*locale, utf8)) return *upper;
  }
  std::string upper(utf8);
  std::ranges::transform(upper, upper.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return upper;
}

}  // namespace tallbook
