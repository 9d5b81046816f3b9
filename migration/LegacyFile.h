// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "tallbook/AccountsManager.h"
#include "tallbook/Value.h"

#include "platform/FileSystem.h"
#include "platform/propertylist/KeyedHash.h"

namespace tallbook {

/// What a migration knows of a legacy file, which decides what becomes of it.
struct OldFile {
  enum class Fate {
    MayGo,      ///< it was converted, or an interrupted removal is being finished
    GoesAside,  ///< what it holds is not all in the accounts file, and never will be
    WentAside,
    Stays,  ///< it could not be converted, and the next migration may do better
    Absent  ///< one that comes to lie there later is not this migration's to remove
  };

  Fate fate = Fate::MayGo;
  std::string why;                        ///< on one line, why it may not go
  FileVersion version;                    ///< that was read; none where nothing was
  AccountsManager::AccountList accounts;  ///< made of it
};

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
  /// `complaint`, and when the system does not let the file be read.
  std::optional<AccountsManager::AccountList> accountsMadeOf(std::string_view key,
                                                             const Convert& convert,
                                                             const std::string& complaint);
  /// The array under the key; empty where there is none.
  ArrayRef descriptions(std::string_view key) const;
  /// What is to become of it, given the accounts that were made of all that it describes; nullopt
  /// where that could not be done.
  OldFile end(std::optional<AccountsManager::AccountList> accounts) const;
  /// Removes the file of the same name that ends in ".original", where there is one.
  void removeOriginal() const;

 private:
  void read(const Folder& folder, const std::string& name);
  void claimIdentifier(BasicAccount& account);

  std::string _path;
  DictionaryRef _contents;
  FileVersion _version;
  std::error_code _refusal;
  std::string _whyNotUnderstood;
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
