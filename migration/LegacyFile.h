#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "tallbook/AccountsManager.h"
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
  using Convert = std::function<std::shared_ptr<BasicAccount>(const DictionaryRef& description)>;
  /// The accounts that `convert` makes of the descriptions in the array under the key; none where
  /// there is no array. Nullopt when it makes null of one, which the console learns of after
  /// `complaint`.
  std::optional<AccountsManager::AccountList> accountsMadeOf(std::string_view key,
                                                             const Convert& convert,
                                                             const std::string& complaint);
  /// Whether all that was asked of it was understood. What was not must not be removed.
  bool wasUnderstood() const noexcept { return _contents && _hasOnlyArrays; }
  /// Removes the file of the same name that ends in ".original", where there is one.
  void removeOriginal() const;

 private:
  ArrayRef descriptions(std::string_view key);
  void claimIdentifier(BasicAccount& account);

  std::string _path;
  DictionaryRef _contents;
  bool _hasOnlyArrays = true;
  /// The identifiers that the file's accounts have received.
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
