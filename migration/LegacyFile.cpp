#include "migration/LegacyFile.h"

#include "tallbook/Vocabulary.h"

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

void UniqueIdentifiers::claim(BasicAccount& account) {
  const String identifier = account.identifier();
  if (!identifier || _claimed.insert(identifier.str()).second) return;
  const String own = BasicAccount::createNewAccountUID();
  account.setAccountPropertyForKey(own, kAccountIdentifier);
  account.setAccountPropertyForKey(own, kAccountSyncIdentifier);
}

}  // namespace tallbook
