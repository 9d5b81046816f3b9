// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/store/MergeDefinition.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>

#include "tallbook/Vocabulary.h"

namespace tallbook::test {
namespace {

void require(bool holds, const std::string& what) {
  if (!holds) throw std::logic_error("not so: " + what);
}

String identifierOf(const DictionaryRef& record) {
  return record[kAccountIdentifier].string();
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
      require(bool(written) == (isKept || isTheirsOnly), "an account is there or not: " + name);
      if (isTheirsOnly) {
        require(equalContent(written, theirs), "an account that came in the file is kept: " + name);
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
      require(!isKept || theirs || equalContent(written, ours),
              "an account that only the store has is kept: " + name);
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
        require(w == h, "what changed here alone is as here: " + name + "." + key);
        if (f && f != h) clashes.insert(name + "." + key + " " + shown(h) + " " + shown(f));
      } else if (h == b) {
        require(w == f, "what is as before here is as in the file: " + name + "." + key);
      } else if (f == b || f == h) {
        require(w == h, "what changed here alone is as here: " + name + "." + key);
      } else if (key.ends_with("Dataclasses") && (!b || isSet(b)) && isSet(h) && isSet(f)) {
        checkSet(b ? b->array() : nullptr, h->array(), f->array(), w ? w->array() : nullptr);
      } else if (key == kAccountChildAccounts && !parent && isChildren(b) && isChildren(h) &&
                 isChildren(f)) {
        checkLists(recordsOf(b), recordsOf(h), recordsOf(f), recordsOf(w), identifierOf(ours));
        require(bool(w) == (!recordsOf(w).empty() || (h && f)),
                "a list of children is there or not: " + name);
      } else {
        require(w == h, "what changed here alone is as here: " + name + "." + key);
        clashes.insert(name + "." + key + " " + shown(h) + " " + shown(f));
      }
    }
    if (!taken.empty()) noteTaken(parent, name + taken);
  }

  static void checkSet(const ArrayRef& before, const ArrayRef& ours, const ArrayRef& theirs,
                       const ArrayRef& written) {
    require(bool(written), "a set is written");
    std::vector<Value> left(theirs->begin(), theirs->end());
    std::vector<Value> added;
    for (const Value& member : {Value("x"), Value("y"), Value("z")}) {
      const bool isChangedHere = contains(before, member) != contains(ours, member);
      const bool isWanted = contains(isChangedHere ? ours : theirs, member);
      require(contains(written, member) == isWanted, "a set has the members that it should");
      if (!isWanted) std::erase(left, member);
    }
    for (const Value& member : ours) {
      if (contains(written, member) && !contains(theirs, member)) added.push_back(member);
    }
    require(std::equal(left.begin(), left.end(), written->begin(),
                       written->begin() + std::min(left.size(), written->size())),
            "a set keeps the order that it has in the file");
    // What was added here follows, each once, in the order in which it first stands here.
    for (std::size_t i = left.size(); i < written->size(); ++i) {
      require(!added.empty(), "a set has no member twice");
      require((*written)[i] == added.front(), "what was added to a set here is in its order");
      const Value done = added.front();
      std::erase(added, done);
    }
    require(added.empty(), "what was added to a set here is in it");
  }

  static void checkOrder(const Records& here, const Records& file, const Records& result) {
    std::vector<String> ofHere, ofResult;
    for (const DictionaryRef& record : here) {
      if (find(result, identifierOf(record))) ofHere.push_back(identifierOf(record));
    }
    for (const DictionaryRef& record : result) {
      if (find(here, identifierOf(record))) ofResult.push_back(identifierOf(record));
    }
    require(ofHere == ofResult, "the accounts are in the order of the store");
    // What only the file has comes right behind the one before it there that is still there.
    String previous;
    for (const DictionaryRef& record : file) {
      const String identifier = identifierOf(record);
      if (!find(result, identifier)) continue;
      if (!find(here, identifier)) {
        const auto place = std::find_if(result.begin(), result.end(), [&](const auto& other) {
          return identifierOf(other) == identifier;
        });
        require((place == result.begin() ? String() : identifierOf(place[-1])) == previous,
                "an account that only the file has stays behind the one before it");
      }
      previous = identifier;
    }
  }
};

}  // namespace

Maybe at(const DictionaryRef& record, const String& key) {
  const Value* value = record ? record->find(key) : nullptr;
  return value ? Maybe(*value) : std::nullopt;
}

DictionaryRef find(const Records& records, const String& identifier) {
  for (const DictionaryRef& record : records) {
    if (identifierOf(record) == identifier) return record;
  }
  return nullptr;
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

void checkMerge(const Records& base, const Records& here, const Records& file) {
  std::vector<HeldRecord> held;
  held.reserve(here.size());
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
  require(clashes == definition.clashes, "all clashes are told and no others");
  require(takenOver == definition.takenOver, "all that was taken over is told and nothing else");
}

void checkMergeOfTwins(const Records& base, const std::vector<HeldRecord>& here,
                       const Records& file) {
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
      require(countWith("h", change) == 1, "a change made here is written once");
    }
  }
  for (const DictionaryRef& record : file) {
    const Value change = record["f"];
    if (change.isNull()) continue;
    const bool isNamed = std::ranges::any_of(merged.clashes, [&](const SaveClash& clash) {
      return clash.elsewhere == change || clash.elsewhere.dictionary()["f"] == change;
    });
    require(countWith("f", change) + isNamed == 1,
            "a change made in the file is kept once, or is a clash");
  }
  for (const DictionaryRef& untouched : base) {
    const auto written = countOf(merged.records, untouched);
    require(written <= countOf(ofHere, untouched), "no twin is doubled");
    require(written >= std::min(countOf(ofHere, untouched), countOf(file, untouched)),
            "no twin is lost");
  }
}

}  // namespace tallbook::test
