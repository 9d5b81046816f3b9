// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/AccountsMerge.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "tallbook/Vocabulary.h"

#include "platform/propertylist/KeyedHash.h"
#include "store/ChangedKeys.h"
#include "store/RecordPairing.h"

namespace tallbook {
namespace {

using Records = std::vector<DictionaryRef>;
using Texts = std::unordered_set<std::string_view, KeyedStringHash>;

/// What is being merged: the accounts, or the children of one of them.
struct Level {
  bool isOfChildren = false;
  String parent;

  SaveClash clash(SaveClash::Kind kind, const String& identifier) const {
    SaveClash clash;
    clash.kind = kind;
    (isOfChildren ? clash.child : clash.account) = identifier;
    if (isOfChildren) clash.account = parent;
    return clash;
  }
};

Value valueOf(const Value* value) {
  return value ? *value : Value();
}

String identifierOf(const DictionaryRef& record) {
  return record[kAccountIdentifier].string();
}

bool isSet(std::string_view key) {
  return key == kAccountEnabledDataclasses || key == kAccountProvisionedDataclasses;
}

/// The strings of an array of nothing else; those of an absent value are none.
std::optional<Texts> textsOf(const Value* value) {
  Texts texts;
  if (!value) return texts;
  const ArrayRef array = value->array();
  if (!array) return std::nullopt;
  for (const Value& element : array) {
    const auto text = element.stringView();
    if (!text) return std::nullopt;
    texts.insert(*text);
  }
  return texts;
}

/// The file's list with what was added and removed here; nullopt where these are no sets. A list
/// that one side took away is no empty set: without one an account may use all dataclasses.
std::optional<Value> mergedSet(const Value* before, const Value* here, const Value* inFile) {
  if (!here || !inFile) return std::nullopt;
  const auto textsBefore = textsOf(before);
  const auto textsHere = textsOf(here);
  auto texts = textsOf(inFile);
  if (!textsBefore || !textsHere || !texts) return std::nullopt;
  const ArrayRef merged = Array::make();
  const ArrayRef list = inFile->array();
  for (const Value& element : list) {
    const std::string_view text = *element.stringView();
    if (!textsBefore->contains(text) || textsHere->contains(text)) merged->append(element);
  }
  const ArrayRef listHere = here->array();
  for (const Value& element : listHere) {
    const std::string_view text = *element.stringView();
    if (!textsBefore->contains(text) && texts->insert(text).second) merged->append(element);
  }
  return merged;
}

/// The children in a list of nothing but children with identifiers; an absent list has none.
std::optional<Records> childrenOf(const Value* value) {
  Records children;
  if (!value) return children;
  const ArrayRef array = value->array();
  if (!array) return std::nullopt;
  children.reserve(array.size());
  for (const Value& element : array) {
    children.push_back(element.dictionary());
    if (!identifierOf(children.back())) return std::nullopt;
  }
  return children;
}

/// What a merge is for.
enum class Purpose {
  Save,      ///< what both sides changed differently is written as it is here
  CarryOver  ///< it stays as it is in the file, and so does what the file has no more
};

class Merge {
 public:
  Merge(Purpose purpose, Level level) : _purpose(purpose), _level(std::move(level)) {}

  MergedAccounts lists(const Records& base, const std::vector<HeldRecord>& here,
                       const Records& file) {
    const RecordPairing pairing(base, here, file);
    // What only the file has, behind what it follows there: nothing, or one of the store's.
    std::vector<std::vector<std::size_t>> followers(here.size() + 1);
    std::size_t followed = 0;
    for (std::size_t at = 0; at < file.size(); ++at) {
      const auto& [ours, before] = pairing.ofFile[at];
      if (ours != kNoRecord) {
        followed = ours + 1;
      } else if (before == kNoRecord) {
        followers[followed].push_back(at);
      } else if (!equalContent(base[before], file[at])) {
        addClash(nullptr, file[at]);
      }
    }
    _merged.records.reserve(here.size() + file.size());
    const auto addFollowers = [&](std::size_t of) {
      for (const std::size_t at : followers[of]) {
        addTakenOver(TakenOver::Kind::Added, file[at]);
        _merged.records.emplace_back(file[at]);
      }
    };
    addFollowers(0);
    for (std::size_t at = 0; at < here.size(); ++at) {
      const RecordPairing::OfHere& others = pairing.ofHere[at];
      const DictionaryRef before = others.base == kNoRecord ? nullptr : base[others.base];
      if (others.file == kNoRecord) {
        addOneOfHere(here[at].properties, before, others.isKnownByContent);
      } else {
        const bool isBefore = before && !others.isKnownByContent;
        addOneOfBoth(here[at].properties, isBefore ? before : here[at].original, file[others.file]);
      }
      addFollowers(at + 1);
    }
    return std::move(_merged);
  }

 private:
  void addClash(const DictionaryRef& here, const DictionaryRef& elsewhere) {
    SaveClash clash = _level.clash(SaveClash::Kind::Account, identifierOf(here ? here : elsewhere));
    clash.here = here;
    clash.elsewhere = elsewhere;
    _merged.clashes.push_back(std::move(clash));
  }

  void addClash(const DictionaryRef& record, const String& key, const Value* here,
                const Value* elsewhere) {
    SaveClash clash = _level.clash(SaveClash::Kind::Key, identifierOf(record));
    clash.key = key;
    clash.here = valueOf(here);
    clash.elsewhere = valueOf(elsewhere);
    _merged.clashes.push_back(std::move(clash));
  }

  void addTakenOver(TakenOver::Kind kind, const DictionaryRef& record,
                    std::vector<String> keys = {}) {
    _merged.takenOver.push_back({kind, identifierOf(record), std::move(keys)});
  }

  /// A record that the file has not: new, or deleted elsewhere. Where records share an identifier
  /// nobody can tell what became of one that is not there as it was, so it is written.
  void addOneOfHere(const DictionaryRef& here, const DictionaryRef& before, bool isShared) {
    if (before && _purpose == Purpose::CarryOver) return;
    const bool isTouched = !equalContent(before, here);
    if (before && !isTouched && !isShared) {
      addTakenOver(TakenOver::Kind::Removed, here);
      return;
    }
    if (before && isTouched) addClash(here, nullptr);
    _merged.records.emplace_back(here);
  }

  void addOneOfBoth(const DictionaryRef& here, const DictionaryRef& before,
                    const DictionaryRef& inFile) {
    if (before.empty()) {
      // Made on both sides, and nobody knows what from.
      forEachChangedKey(*inFile, *here,
                        [&](const String& key, const Value* theirs, const Value* ours) {
                          if (theirs) addClash(here, key, ours, theirs);
                        });
      _merged.records.emplace_back(here);
      return;
    }
    if (equalContent(before, inFile)) {
      _merged.records.emplace_back(here);
      return;
    }
    const DictionaryRef merged =
        equalContent(before, here) ? inFile : mergedKeys(here, before, inFile);
    std::vector<String> keys;
    forEachChangedKey(*before, *inFile, [&](const String& key, const Value*, const Value*) {
      if (!isSame(merged->find(key), here->find(key))) keys.push_back(key);
    });
    if (!keys.empty()) addTakenOver(TakenOver::Kind::Changed, here, std::move(keys));
    _merged.records.emplace_back(merged);
  }

  DictionaryRef mergedKeys(const DictionaryRef& here, const DictionaryRef& before,
                           const DictionaryRef& inFile) {
    DictionaryRef merged = inFile->mutableCopy();
    forEachChangedKey(*before, *here, [&](const String& key, const Value* old, const Value* ours) {
      const Value* const theirs = inFile->find(key);
      if (isSame(ours, theirs)) return;
      if (isSame(old, theirs)) {
        put(*merged, key, ours);
      } else if (const auto set = isSet(key) ? mergedSet(old, ours, theirs) : std::nullopt) {
        put(*merged, key, &*set);
      } else if (const auto children = key == kAccountChildAccounts
                                           ? mergedChildren(here, old, ours, theirs)
                                           : std::nullopt) {
        // An empty list does not come back where one side took it away.
        const Value list = Array::make(*children);
        put(*merged, key, children->empty() && !(ours && theirs) ? nullptr : &list);
      } else {
        addClash(here, key, ours, theirs);
        if (_purpose == Purpose::Save) put(*merged, key, ours);
      }
    });
    return merged;
  }

  /// The children of an account, one by one; nullopt where they cannot be told apart, and for the
  /// children of a child.
  std::optional<std::vector<Value>> mergedChildren(const DictionaryRef& parent, const Value* before,
                                                   const Value* here, const Value* inFile) {
    if (_level.isOfChildren) return std::nullopt;
    const auto childrenBefore = childrenOf(before);
    const auto childrenHere = childrenOf(here);
    const auto childrenInFile = childrenOf(inFile);
    if (!childrenBefore || !childrenHere || !childrenInFile) return std::nullopt;
    std::vector<HeldRecord> held;
    held.reserve(childrenHere->size());
    for (const DictionaryRef& child : *childrenHere) held.push_back({child, nullptr});
    MergedAccounts merged =
        Merge(_purpose, {true, identifierOf(parent)}).lists(*childrenBefore, held, *childrenInFile);
    std::ranges::move(merged.clashes, std::back_inserter(_merged.clashes));
    return std::move(merged.records);
  }

  Purpose _purpose;
  Level _level;
  MergedAccounts _merged;
};

}  // namespace

MergedAccounts mergedAccounts(const std::vector<DictionaryRef>& base,
                              const std::vector<HeldRecord>& here,
                              const std::vector<DictionaryRef>& file) {
  return Merge(Purpose::Save, {}).lists(base, here, file);
}

std::vector<Value> withChangesCarriedOver(const std::vector<DictionaryRef>& records,
                                          const std::vector<DictionaryRef>& before,
                                          const std::vector<DictionaryRef>& after) {
  std::vector<HeldRecord> held;
  held.reserve(after.size());
  for (const DictionaryRef& record : after) held.push_back({record, nullptr});
  return Merge(Purpose::CarryOver, {}).lists(before, held, records).records;
}

}  // namespace tallbook
