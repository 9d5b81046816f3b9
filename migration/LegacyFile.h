#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "tallbook/BasicAccount.h"
#include "tallbook/Value.h"

#include "platform/propertylist/KeyedHash.h"

namespace tallbook {

/// A legacy property-list file as a conversion sees it.
class LegacyFile {
 public:
  /// Reads the file at once.
  explicit LegacyFile(std::string path);

  /// Its top level; null when it is missing or holds no dictionary.
  const DictionaryRef& contents() const noexcept { return _contents; }
  bool hasEntries() const noexcept { return _contents && !_contents->empty(); }
  /// The array under the key; an empty one where there is none.
  ArrayRef descriptions(std::string_view key);
  /// Whether all that was asked of it was understood. What was not must not be removed.
  bool wasUnderstood() const noexcept { return _contents && _hasOnlyArrays; }
  /// Removes the file of the same name that ends in ".original", where there is one.
  void removeOriginal() const;

 private:
  std::string _path;
  DictionaryRef _contents;
  bool _hasOnlyArrays = true;
};

/// The identifiers that the accounts of one legacy file have received. A store holds one account
/// under an identifier; where a damaged file gives one to two accounts, the second must not take
/// the first one's place.
class UniqueIdentifiers {
 public:
  /// Gives the account identifiers of its own when another has its identifier already.
  void claim(BasicAccount& account);

 private:
  std::unordered_set<std::string, KeyedStringHash> _claimed;
};

/// A legacy key and its name in an account record.
using Renaming = std::pair<std::string_view, String>;

/// A mutable copy of a legacy description whose keys have their present names; null for null.
template <class Renamings>
DictionaryRef renamed(const DictionaryRef& description, const Renamings& renamings) {
  if (!description) return nullptr;
  const DictionaryRef copy = description->mutableCopy();
  for (const auto& [oldKey, newKey] : renamings) {
    const Value* found = copy->find(oldKey);
    if (!found) continue;
    const Value value = *found;
    copy->remove(oldKey);
    copy->set(newKey, value);
  }
  return copy;
}

}  // namespace tallbook
