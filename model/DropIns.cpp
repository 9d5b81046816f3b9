// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "model/DropIns.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "model/DictionaryFile.h"
#include "model/LibraryLogging.h"
#include "platform/Platform.h"

namespace tallbook {

std::vector<DropIn> dropInsOf(std::string_view resource) {
  Platform& platform = Platform::current();
  const std::string path = platform.resourceBundle().dropInFolder(resource);
  std::error_code error;
  std::vector<std::string> names;
  if (const auto folder = platform.fileSystem().openFolder(path, error)) {
    names = folder->names(error);
  }
  if (error == std::errc::no_such_file_or_directory) return {};
  if (error) return {{path, nullptr, "it cannot be read: " + error.message()}};
  // A package manager's and an editor's own files have other endings.
  std::erase_if(names, [](const std::string& name) {
    return !name.ends_with(".plist") || name.starts_with('.');
  });
  std::ranges::sort(names);
  std::vector<DropIn> dropIns;
  dropIns.reserve(names.size());
  for (const std::string& name : names) {
    DropIn dropIn{path + "/" + name, nullptr, {}};
    dropIn.content = dictionaryFromFile(dropIn.path, &dropIn.fault);
    dropIns.push_back(std::move(dropIn));
  }
  return dropIns;
}

void logLeftOut(const std::string& path, const std::string& fault) {
  logMessage("+[BasicAccount initialize]",
             [&] { return "ERROR: Leaving out " + path + ": " + fault; });
}

}  // namespace tallbook
