// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Before the rapidcheck header, which needs it.
#include <algorithm>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <set>

#include "tallbook/Vocabulary.h"

#include "store/AccountsMerge.h"

namespace tallbook {
namespace {

using Records = std::vector<DictionaryRef>;
using Maybe = std::optional<Value>;

bool oneIn(int count) {
  return *rc::gen::inRange(0, count) == 0;
}

// What the merge has to be, as slow and as plain as it can be said

Maybe at(const DictionaryRef& record, const String& key) {
  const Value* value = record ? record->find(key) : nullptr;
  return value ? Maybe(*value) : std::nullopt;
}

String identifierOf(const DictionaryRef& record) {
  return record[kAccountIdentifier].string();
}

DictionaryRef find(const Records& records, const String& identifier) {
  for (const DictionaryRef& record : records) {
    if (identifierOf(record) == identifier) return record;
  }
  return nullptr;
}

bool contains(const ArrayRef& list, const Value& value) {
  return list && std::find(list->begin(), list->end(), value) != list->end();
}

bool isListOf(const Maybe& value, Value::Kind kind) {
  const ArrayRef list = value ? value->array() : nullptr;
  return list && std::all_of(list->begin(), list->end(),
                             [&](const Value& element) { return element.kind() == kind; });
}

bool isSet(const Maybe& value) {
  return isListOf(value, Value::Kind::String);
}

bool isChildren(const Maybe& value) {
  if (!value) return true;
  if (!isListOf(value, Value::Kind::Dictionary)) return false;
  const ArrayRef list = value->array();
  return std::all_of(list->begin(), list->end(),
                     [](const Value& child) { return bool(identifierOf(child.dictionary())); });
}

Records recordsOf(const Maybe& value) {
  Records records;
  const ArrayRef list = value ? value->array() : nullptr;
  for (const Value& record : list) records.push_back(record.dictionary());
  return records;
}

class Definition {
 public:
  /// What was merged into what, at the level of accounts or of the children of `parent`.
  void checkLists(const Records& base, const Records& here, const Records& file,
                  const Records& result, const String& parent = nullptr) {
    std::set<std::string> identifiers;
    for (const Records* list : {&base, &here, &file, &result}) {
      for (const DictionaryRef& record : *list) identifiers.insert(identifierOf(record).str());
    }
    for (const std::string& identifier : identifiers) {
      const DictionaryRef before = find(base, identifier);
      const DictionaryRef ours = find(here, identifier);
      const DictionaryRef theirs = find(file, identifier);
      const DictionaryRef written = find(result, identifier);
      const std::string name = parent ? parent.str() + "/" + identifier : identifier;
      const bool isTheirsOnly = theirs && !ours && !before;
      const bool isGoneElsewhere = before && ours && !theirs;
      const bool isKept = ours && !(isGoneElsewhere && equalContent(before, ours));
      RC_ASSERT(bool(written) == (isKept || isTheirsOnly));
      if (isTheirsOnly) {
        RC_ASSERT(equalContent(written, theirs));
        noteTaken(parent, "+" + name);
      } else if (ours && theirs) {
        checkRecord(before, ours, theirs, written, name, parent);
      } else if (isGoneElsewhere && isKept) {
        clashes.insert(name + " " + shown(Maybe(ours)) + " " + shown(std::nullopt));
      } else if (isGoneElsewhere) {
        noteTaken(parent, "-" + name);
      } else if (before && !ours && theirs && !equalContent(before, theirs)) {
        clashes.insert(name + " " + shown(std::nullopt) + " " + shown(Maybe(theirs)));
      }
      if (isKept && !theirs) RC_ASSERT(equalContent(written, ours));
    }
    checkOrder(here, file, result);
  }

  static std::string shown(const Maybe& value) { return value ? value->description() : "nothing"; }

  std::multiset<std::string> clashes, takenOver;

 private:
  void noteTaken(const String& parent, const std::string& text) {
    if (!parent) takenOver.insert(text);
  }

  void checkRecord(const DictionaryRef& before, const DictionaryRef& ours,
                   const DictionaryRef& theirs, const DictionaryRef& written,
                   const std::string& name, const String& parent) {
    std::set<std::string> keys;
    for (const DictionaryRef& record : {before, ours, theirs, written}) {
      for (const auto& [key, value] : record) keys.insert(key.str());
    }
    std::string taken;
    for (const std::string& key : keys) {
      const Maybe b = at(before, key), h = at(ours, key), f = at(theirs, key), w = at(written, key);
      if (before && b != f && w != h) taken += "." + key;
      if (!before) {
        RC_ASSERT(w == h);
        if (f && f != h) clashes.insert(name + "." + key + " " + shown(h) + " " + shown(f));
      } else if (h == b) {
        RC_ASSERT(w == f);
      } else if (f == b || f == h) {
        RC_ASSERT(w == h);
      } else if (key.ends_with("Dataclasses") && (!b || isSet(b)) && isSet(h) && isSet(f)) {
        checkSet(b ? b->array() : nullptr, h->array(), f->array(), w ? w->array() : nullptr);
      } else if (key == kAccountChildAccounts && !parent && isChildren(b) && isChildren(h) &&
                 isChildren(f)) {
        checkLists(recordsOf(b), recordsOf(h), recordsOf(f), recordsOf(w), identifierOf(ours));
        RC_ASSERT(bool(w) == (!recordsOf(w).empty() || (h && f)));
      } else {
        RC_ASSERT(w == h);
        clashes.insert(name + "." + key + " " + shown(h) + " " + shown(f));
      }
    }
    if (!taken.empty()) noteTaken(parent, name + taken);
  }

  static void checkSet(const ArrayRef& before, const ArrayRef& ours, const ArrayRef& theirs,
                       const ArrayRef& written) {
    RC_ASSERT(bool(written));
    std::vector<Value> left(theirs->begin(), theirs->end());
    std::vector<Value> added;
    for (const Value& member : {Value("x"), Value("y"), Value("z")}) {
      const bool isChangedHere = contains(before, member) != contains(ours, member);
      const bool isWanted = contains(isChangedHere ? ours : theirs, member);
      RC_ASSERT(contains(written, member) == isWanted);
      if (!isWanted) std::erase(left, member);
    }
    for (const Value& member : ours) {
      if (contains(written, member) && !contains(theirs, member)) added.push_back(member);
    }
    RC_ASSERT(std::equal(left.begin(), left.end(), written->begin(),
                         written->begin() + std::min(left.size(), written->size())));
    // What was added here follows, each once, in the order in which it first stands here.
    for (std::size_t i = left.size(); i < written->size(); ++i) {
      RC_ASSERT(!added.empty());
      RC_ASSERT((*written)[i] == added.front());
      const Value done = added.front();
      std::erase(added, done);
    }
    RC_ASSERT(added.empty());
  }

  static void checkOrder(const Records& here, const Records& file, const Records& result) {
    std::vector<String> ofHere, ofResult;
    for (const DictionaryRef& record : here) {
      if (find(result, identifierOf(record))) ofHere.push_back(identifierOf(record));
    }
    for (const DictionaryRef& record : result) {
      if (find(here, identifierOf(record))) ofResult.push_back(identifierOf(record));
    }
    RC_ASSERT(ofHere == ofResult);
    // What only the file has comes right behind the one before it there that is still there.
    String previous;
    for (const DictionaryRef& record : file) {
      const String identifier = identifierOf(record);
      if (!find(result, identifier)) continue;
      if (!find(here, identifier)) {
        const auto place = std::find_if(result.begin(), result.end(), [&](const auto& other) {
          return identifierOf(other) == identifier;
        });
        RC_ASSERT((place == result.begin() ? String() : identifierOf(place[-1])) == previous);
      }
      previous = identifier;
    }
  }
};

// Small worlds, in which the same change is often made on two sides

Maybe anySet() {
  if (oneIn(5)) return std::nullopt;
  if (oneIn(12)) return Value(1);
  const ArrayRef set = Array::make();
  for (int count = *rc::gen::inRange(0, 4); count > 0; --count) {
    set->append(*rc::gen::element<std::string>("x", "y", "z"));
  }
  if (oneIn(12)) set->append(1);
  return set;
}

Records anyList(bool isOfChildren, const Records& base = {});

Maybe anyChildren(const Maybe& base) {
  if (oneIn(5)) return std::nullopt;
  if (oneIn(12)) return Value("no list");
  const ArrayRef list = Array::make();
  for (const DictionaryRef& child : anyList(true, isChildren(base) ? recordsOf(base) : Records())) {
    list->append(child);
  }
  if (oneIn(12)) list->append(Dictionary::make());
  return list;
}

DictionaryRef anyRecord(const String& identifier, bool isChild, const DictionaryRef& base) {
  const DictionaryRef record = Dictionary::make({{kAccountIdentifier, identifier}});
  const auto fill = [&](const String& key, const auto& any) {
    const Maybe value = base && oneIn(2) ? at(base, key) : any();
    if (value) record->set(key, *value);
  };
  const auto anyNumber = []() -> Maybe {
    const int number = *rc::gen::inRange(0, 4);
    return number == 0 ? Maybe() : number == 1 ? Maybe(Value()) : Maybe(number);
  };
  fill("k", anyNumber);
  fill("l", anyNumber);
  fill(kAccountEnabledDataclasses, anySet);
  fill(kAccountProvisionedDataclasses, anySet);
  fill(kAccountChildAccounts, [&]() -> Maybe {
    return isChild ? Maybe(Array::make({*rc::gen::inRange(0, 3)}))
                   : anyChildren(at(base, kAccountChildAccounts));
  });
  return record;
}

Records anyList(bool isOfChildren, const Records& base) {
  Records list;
  for (const char* identifier : {"a", "b", "c", "d"}) {
    if (oneIn(4)) continue;
    const DictionaryRef before = find(base, identifier);
    const DictionaryRef record =
        before && oneIn(3) ? before->mutableCopy() : anyRecord(identifier, isOfChildren, before);
    list.insert(list.begin() + *rc::gen::inRange<std::ptrdiff_t>(0, std::ssize(list) + 1), record);
  }
  return list;
}

RC_GTEST_PROP(AnyThreeLists, MergeAsTheTableSays, ()) {
  const Records base = anyList(false);
  const Records here = anyList(false, base);
  const Records file = anyList(false, base);
  std::vector<HeldRecord> held;
  for (const DictionaryRef& record : here) held.push_back({record, nullptr});
  const MergedAccounts merged = mergedAccounts(base, held, file);

  Definition definition;
  Records result;
  for (const Value& record : merged.records) result.push_back(record.dictionary());
  definition.checkLists(base, here, file, result);
  std::multiset<std::string> clashes, takenOver;
  for (const SaveClash& clash : merged.clashes) {
    const bool isKey = clash.kind == SaveClash::Kind::Key;
    const auto side = [&](const Value& value, bool isHere) {
      // A null value stands for none; the definition tells them apart.
      if (!value.isNull()) return Definition::shown(value);
      if (!isKey) return Definition::shown(std::nullopt);
      const Records& list = isHere ? here : file;
      DictionaryRef record = find(list, clash.account);
      if (clash.child) record = find(recordsOf(at(record, kAccountChildAccounts)), clash.child);
      return Definition::shown(at(record, clash.key));
    };
    clashes.insert(clash.account.str() + (clash.child ? "/" + clash.child.str() : "") +
                   (isKey ? "." + clash.key.str() : "") + " " + side(clash.here, true) + " " +
                   side(clash.elsewhere, false));
  }
  for (const TakenOver& taken : merged.takenOver) {
    std::vector<std::string> keys;
    for (const String& key : taken.keys) keys.push_back("." + key.str());
    std::ranges::sort(keys);
    std::string text = taken.kind == TakenOver::Kind::Added     ? "+"
                       : taken.kind == TakenOver::Kind::Removed ? "-"
                                                                : "";
    text += taken.account.str();
    for (const std::string& key : keys) text += key;
    takenOver.insert(text);
  }
  RC_ASSERT(clashes == definition.clashes);
  RC_ASSERT(takenOver == definition.takenOver);
}

// Each change leaves a mark of its own; "h" for one made here, "f" for one in the file.
RC_GTEST_PROP(AnyThreeListsOfTwins, MergeWithoutALossOrADouble, ()) {
  int mark = 1000;
  const auto anyTwin = [] {
    const DictionaryRef record = Dictionary::make({{"k", *rc::gen::inRange(0, 2)}});
    const int identifier = *rc::gen::inRange(0, 4);
    if (identifier > 0) record->set(kAccountIdentifier, std::string(1, char('a' + identifier)));
    return record;
  };
  const auto marked = [&](const DictionaryRef& record, const char* key) {
    const DictionaryRef changed = record->mutableCopy();
    changed->set(key, ++mark);
    return changed;
  };
  const auto numberOfNew = [] { return *rc::gen::inRange(0, 3); };
  Records base, file;
  std::vector<HeldRecord> here;
  for (int count = *rc::gen::inRange(0, 7); count > 0; --count) base.push_back(anyTwin());
  for (const DictionaryRef& record : base) {
    if (!oneIn(4)) here.push_back({oneIn(2) ? record : marked(record, "h"), record});
    if (!oneIn(4)) file.push_back(oneIn(2) ? record : marked(record, "f"));
  }
  for (int count = numberOfNew(); count > 0; --count) {
    here.push_back({marked(anyTwin(), "h"), nullptr});
  }
  for (int count = numberOfNew(); count > 0; --count) file.push_back(marked(anyTwin(), "f"));
  if (!file.empty()) {
    std::rotate(file.begin(), file.begin() + *rc::gen::inRange<std::ptrdiff_t>(0, std::ssize(file)),
                file.end());
  }

  const MergedAccounts merged = mergedAccounts(base, here, file);
  const auto countWith = [&](const String& key, const Value& value) {
    return std::ranges::count_if(
        merged.records, [&](const Value& record) { return record.dictionary()[key] == value; });
  };
  const auto countOf = [](const auto& list, const DictionaryRef& content) {
    return std::ranges::count_if(
        list, [&](const auto& record) { return Value(record) == Value(content); });
  };
  Records ofHere;
  for (const HeldRecord& record : here) {
    ofHere.push_back(record.properties);
    if (const Value change = record.properties["h"]; !change.isNull()) {
      RC_ASSERT(countWith("h", change) == 1);
    }
  }
  for (const DictionaryRef& record : file) {
    const Value change = record["f"];
    if (change.isNull()) continue;
    const bool isNamed = std::ranges::any_of(merged.clashes, [&](const SaveClash& clash) {
      return clash.elsewhere == change || clash.elsewhere.dictionary()["f"] == change;
    });
    RC_ASSERT(countWith("f", change) + isNamed == 1);
  }
  for (const DictionaryRef& untouched : base) {
    const auto written = countOf(merged.records, untouched);
    RC_ASSERT(written <= countOf(ofHere, untouched));
    RC_ASSERT(written >= std::min(countOf(ofHere, untouched), countOf(file, untouched)));
  }
}

}  // namespace
}  // namespace tallbook
