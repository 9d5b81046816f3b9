#include "model/DictionaryFile.h"

#include <system_error>

#include "tallbook/PropertyList.h"

#include "platform/Platform.h"

namespace tallbook {

DictionaryRef dictionaryFromFile(const std::string& path) {
  std::error_code error;
  const std::string bytes = Platform::current().fileSystem().readFile(path, error);
  if (error) return nullptr;
  const auto root = propertyListFromBytes(bytes);
  return root ? root->dictionary() : nullptr;
}

DictionaryRef dictionaryFromResource(std::string_view name) {
  const auto path = Platform::current().resourceBundle().pathForResource(name, "plist");
  return path ? dictionaryFromFile(*path) : nullptr;
}

}  // namespace tallbook
