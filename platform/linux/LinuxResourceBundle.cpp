#include "platform/linux/LinuxResourceBundle.h"

#include <dlfcn.h>
#include <filesystem>

#include "platform/linux/FactFile.h"
#include "platform/linux/UserLanguages.h"

namespace tallbook {
namespace {

constexpr const char* kFallbackLanguage = "en";

std::optional<std::string> fileIn(const std::vector<std::string>& folders,
                                  const std::string& name) {
  for (const std::string& folder : folders) {
    std::string path = folder + "/" + name;
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) return path;
  }
  return std::nullopt;
}

}  // namespace

std::string LinuxResourceBundle::folderOfThisLibrary() {
  Dl_info library{};
  if (!::dladdr(kFallbackLanguage, &library) || !library.dli_fname) return {};
  // The folder's true place: "/lib" may be a link to "/usr/lib", whose neighbours are meant.
  std::error_code error;
  const auto folder = std::filesystem::canonical(
      std::filesystem::absolute(library.dli_fname, error).parent_path(), error);
  return error ? std::string()
               : (folder / TALLBOOK_RESOURCES_FROM_LIBRARY).lexically_normal().string();
}

std::optional<std::string> LinuxResourceBundle::pathForResource(std::string_view name,
                                                                std::string_view type) const {
  return fileIn(_folders, std::string(name) + "." + std::string(type));
}

std::string LinuxResourceBundle::localizedString(std::string_view key, std::string_view table,
                                                 std::string_view defaultText) const {
  std::vector<std::string> languages = userLanguages();
  languages.emplace_back(kFallbackLanguage);
  for (const std::string& language : languages) {
    if (const String text = textIn(language, table, key)) return text.str();
  }
  return std::string(defaultText.empty() ? key : defaultText);
}

String LinuxResourceBundle::textIn(const std::string& language, std::string_view table,
                                   std::string_view key) const {
  const DictionaryRef texts = tableOf({language, std::string(table)});
  return texts ? (*texts)[key].string() : String();
}

DictionaryRef LinuxResourceBundle::tableOf(const LanguageAndTable& which) const {
  std::scoped_lock guard(_reading);
  if (const auto known = _tables.find(which); known != _tables.end()) return known->second;
  const auto path = fileIn(_folders, which.first + "/" + which.second + ".strings");
  return _tables[which] = path ? dictionaryInFile(*path) : nullptr;
}

}  // namespace tallbook
