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

}  // namespace

std::vector<std::string> userLanguages() {
  const std::string_view locale = messagesLocale();
  const std::string_view language = locale.substr(0, locale.find_first_of(".@"));
  if (!isName(language) || language == "C" || language == "POSIX") return {};
  std::vector<std::string> languages{std::string(language)};
  const auto territory = language.find('_');
  if (territory != std::string_view::npos && territory > 0) {
    languages.emplace_back(language.substr(0, territory));
  }
  return languages;
}

}  // namespace tallbook
