// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/ChangeDetection.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "tallbook/Vocabulary.h"

#include "platform/propertylist/KeyedHash.h"

namespace tallbook {
namespace {

/// Dataclasses in the order in which they were added, each once. A stored list may be of any
/// length.
class Dataclasses {
 public:
  void add(const String& dataclass) {
    if (_members.insert(dataclass.view()).second) _list.push_back(dataclass);
  }
  void add(const Dataclasses& others) {
    for (const String& dataclass : others._list) add(dataclass);
  }
  void addDifference(const Dataclasses& from, const Dataclasses& without) {
    for (const String& dataclass : from._list) {
      if (!without._members.contains(dataclass.view())) add(dataclass);
    }
  }
  bool empty() const { return _list.empty(); }
  std::vector<String> list() && { return std::move(_list); }

 private:
  std::vector<String> _list;
  std::unordered_set<std::string_view, KeyedStringHash> _members;  // the list's own texts
};

Dataclasses enabledDataclasses(const DictionaryRef& properties) {
  Dataclasses enabled;
  const ArrayRef stored = properties ? (*properties)[kAccountEnabledDataclasses].array() : nullptr;
  if (!stored) return enabled;
  for (const Value& dataclass : *stored) {
    if (const String name = dataclass.string()) enabled.add(name);
  }
  return enabled;
}

bool isCompared(std::string_view key) {
  return kAccountEnabledDataclasses != key && kAccountChildAccounts != key && key != "IsActive";
}

std::size_t comparedKeys(const Dictionary& properties) {
  return static_cast<std::size_t>(
      std::count_if(properties.begin(), properties.end(),
                    [](const auto& entry) { return isCompared(entry.key); }));
}

bool differInComparedKeys(const Dictionary& a, const Dictionary& b) {
  for (const auto& [key, value] : a) {
    if (!isCompared(key)) continue;
    const Value* other = b.find(key);
    if (!other || !(*other == value)) return true;
  }
  return comparedKeys(a) != comparedKeys(b);
}

}  // namespace

std::vector<String> dataclassesConcernedByChange(AccountChange change,
                                                 const DictionaryRef& original,
                                                 const DictionaryRef& current) {
  if (change == AccountChange::Added) return enabledDataclasses(current).list();
  if (change == AccountChange::Removed) return enabledDataclasses(original).list();
  if (original && current && original->sharesStorageWith(*current)) return {};
  const Dataclasses before = enabledDataclasses(original);
  const Dataclasses after = enabledDataclasses(current);
  Dataclasses concerned;
  concerned.addDifference(before, after);
  concerned.addDifference(after, before);
  // Without original properties all that is enabled now was switched on.
  if (original && !after.empty() && differInComparedKeys(*original, *current)) concerned.add(after);
  return std::move(concerned).list();
}

}  // namespace tallbook
