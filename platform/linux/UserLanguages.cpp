// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/UserLanguages.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace tallbook {
namespace {

// The first variable that is set and not empty decides, as POSIX has it.
std::string_view messagesLocale() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value && *value) return value;
  }
  return {};
}

// Languages become folder names.
bool isName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  });
}

// "de_AT.UTF-8" gives "de_AT"; nothing comes of what is no language.
std::string_view languageOf(std::string_view locale) {
  const std::string_view language = locale.substr(0, locale.find_first_of(".@"));
  return isName(language) && language != "C" && language != "POSIX" ? language : "";
}

void add(std::vector<std::string>& languages, std::string_view language) {
  if (language.empty() || std::ranges::find(languages, language) != languages.end()) return;
  languages.emplace_back(language);
}

}  // namespace

std::vector<std::string> userLanguages() {
  const std::string_view locale = messagesLocale();
  std::vector<std::string> languages;
  if (languageOf(locale).empty()) return languages;
  const char* const wished = std::getenv("LANGUAGE");
  std::string_view rest = wished && *wished ? wished : locale;
  while (!rest.empty()) {
    const std::string_view one = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(rest.size(), one.size() + 1));
    // The texts that are there without any table: nothing comes after them.
    if (one == "C" || one == "POSIX") break;
    const std::string_view language = languageOf(one);
    add(languages, language);
    add(languages, language.substr(0, language.find('_')));
  }
  return languages;
}

}  // namespace tallbook
