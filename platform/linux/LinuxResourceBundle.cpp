// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxResourceBundle.h"

#include <dlfcn.h>
#include <filesystem>
#include <link.h>

#include "platform/linux/FactFile.h"
#include "platform/linux/UserLanguages.h"

namespace tallbook {
namespace {

constexpr const char* kFallbackLanguage = "en";

/// Where the file lies that this code was loaded from. `dladdr` would look at every symbol for the
/// nearest one.
std::string fileOfThisCode() {
  dl_find_object code{};
  if (::_dl_find_object(const_cast<char*>(kFallbackLanguage), &code) != 0) return {};
  std::string library = code.dlfo_link_map->l_name;
  if (!library.empty()) return library;
  std::error_code error;  // part of the program itself
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

}  // namespace

std::string LinuxResourceBundle::folderOfThisLibrary() {
  std::string folder = fileOfThisCode();
  if (folder.empty()) return {};
  // The part after the last slash is the library's name.
  folder.erase(folder.rfind('/') + 1);
  if (!folder.starts_with('/')) {
    std::error_code error;
    folder = std::filesystem::current_path(error).string() + "/" + folder;
  }
  // The kernel takes ".." from the folder's true place: "/lib" may be a link to "/usr/lib", whose
  // neighbours are meant.
  return folder + TALLBOOK_RESOURCES_FROM_LIBRARY;
}

std::optional<std::string> LinuxResourceBundle::fileNamed(const std::string& name) const {
  for (const std::string& folder : _folders) {
    std::string path = folder + "/" + name;
    if (_root.hasFile(path)) return path;
  }
  return std::nullopt;
}

std::optional<std::string> LinuxResourceBundle::pathForResource(std::string_view name,
                                                                std::string_view type) const {
  return fileNamed(std::string(name) + "." + std::string(type));
}

std::vector<std::string> LinuxResourceBundle::pathsForResource(std::string_view name,
                                                               std::string_view type) const {
  std::vector<std::string> paths;
  for (const std::string& folder : _folders) {
    std::string path = folder + "/" + std::string(name) + "." + std::string(type);
    if (_root.hasFile(path)) paths.push_back(std::move(path));
  }
  return paths;
}

// What another machine's components add is nothing for a device tree, which lacks their modules.
std::string LinuxResourceBundle::dropInFolder(std::string_view name) const {
  return _folders.front() + "/" + std::string(name) + ".d";
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
  const auto path = fileNamed(which.first + "/" + which.second + ".strings");
  return _tables[which] = path ? dictionaryInFile(_root, *path) : nullptr;
}

}  // namespace tallbook
