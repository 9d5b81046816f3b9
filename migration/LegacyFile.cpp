#include "migration/LegacyFile.h"

#include "tallbook/Vocabulary.h"

#include "migration/Console.h"
#include "model/DictionaryFile.h"
#include "platform/Platform.h"

namespace tallbook {

LegacyFile::LegacyFile(std::string path)
    : _path(std::move(path)), _contents(dictionaryFromFile(_path)) {}

std::optional<AccountsManager::AccountList> LegacyFile::accountsMadeOf(
    std::string_view key, const Convert& convert, const std::string& complaint) {
  AccountsManager::AccountList accounts;
  const ArrayRef elements = descriptions(key);
  for (const Value& description : *elements) {
    auto account = convert(description.dictionary());
    if (!account) {
      consoleLog(complaint + description.description());
      return std::nullopt;
    }
    claimIdentifier(*account);
    accounts.push_back(std::move(account));
  }
  return accounts;
}

ArrayRef LegacyFile::descriptions(std::string_view key) {
  const Value* found = _contents ? _contents->find(key) : nullptr;
  const ArrayRef array = found ? found->array() : nullptr;
  if (found && !array) _hasOnlyArrays = false;
  return array ? array : Array::make();
}

void LegacyFile::removeOriginal() const {
  static_cast<void>(Platform::current().fileSystem().remove(_path + ".original"));
}

// A store holds one account under an identifier; where a damaged file gives one to two accounts,
// the second must not take the first one's place, and gets identifiers of its own.
void LegacyFile::claimIdentifier(BasicAccount& account) {
  const String identifier = account.identifier();
  if (!identifier || _claimed.insert(identifier.str()).second) return;
  const String own = BasicAccount::createNewAccountUID();
  account.setAccountPropertyForKey(own, kAccountIdentifier);
  account.setAccountPropertyForKey(own, kAccountSyncIdentifier);
}

}  // namespace tallbook
