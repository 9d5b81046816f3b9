#include "migration/LegacyFile.h"

#include "model/DictionaryFile.h"
#include "platform/Platform.h"

namespace tallbook {

LegacyFile::LegacyFile(std::string path)
    : _path(std::move(path)), _contents(dictionaryFromFile(_path)) {}

ArrayRef LegacyFile::descriptions(std::string_view key) {
  const Value* found = _contents ? _contents->find(key) : nullptr;
  const ArrayRef array = found ? found->array() : nullptr;
  if (found && !array) _hasOnlyArrays = false;
  return array ? array : Array::make();
}

void LegacyFile::removeOriginal() const {
  static_cast<void>(Platform::current().fileSystem().remove(_path + ".original"));
}

}  // namespace tallbook
