// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/FactFile.h"

#include "tallbook/PropertyList.h"

namespace tallbook {

DictionaryRef dictionaryInFile(const DeviceRoot& root, const std::string& path,
                               std::string* problem) {
  std::error_code error;
  const std::string bytes = root.readFile(path, error);
  if (error == std::errc::no_such_file_or_directory) return nullptr;
  const auto report = [&](const std::string& reason) -> DictionaryRef {
    if (problem) *problem = path + ": " + reason;
    return nullptr;
  };
  if (error) return report(error.message());
  std::string malformed;
  const auto tree = propertyListFromBytes(bytes, &malformed);
  if (!tree) return report(malformed);
  const DictionaryRef dictionary = tree->dictionary();
  return dictionary ? dictionary : report("not a dictionary");
}

}  // namespace tallbook
