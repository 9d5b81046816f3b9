// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "model/DictionaryFile.h"

#include <system_error>

#include "tallbook/PropertyList.h"

#include "platform/Platform.h"

namespace tallbook {

DictionaryRef dictionaryFromFile(const std::string& path, std::string* fault) {
  const auto failed = [&](const std::string& why) {
    if (fault) *fault = why;
    return DictionaryRef();
  };
  std::error_code error;
  const std::string bytes = Platform::current().fileSystem().readFile(path, error);
  if (error) return failed("it cannot be read: " + error.message());
  std::string whyNone;
  const auto root = propertyListFromBytes(bytes, fault ? &whyNone : nullptr);
  if (!root) return failed("it is no property list: " + whyNone);
  const DictionaryRef content = root->dictionary();
  return content ? content : failed("it " + textOfWrongKind(*root, "dictionary"));
}

DictionaryRef dictionaryFromResource(std::string_view name) {
  const auto path = Platform::current().resourceBundle().pathForResource(name, "plist");
  return path ? dictionaryFromFile(*path) : nullptr;
}

}  // namespace tallbook
