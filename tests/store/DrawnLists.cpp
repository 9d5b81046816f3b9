// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/store/DrawnLists.h"

#include <algorithm>
#include <string>

#include "tallbook/Vocabulary.h"

namespace tallbook::test {
namespace {

class World {
 public:
  explicit World(const Draw& draw) : _draw(draw) {}

  ThreeLists lists() const {
    ThreeLists lists;
    lists.base = anyList(false);
    lists.here = anyList(false, lists.base);
    lists.file = anyList(false, lists.base);
    return lists;
  }

  ThreeListsOfTwins twins() const {
    int mark = 1000;
    const auto marked = [&](const DictionaryRef& record, const char* key) {
      const DictionaryRef changed = record->mutableCopy();
      changed->set(key, ++mark);
      return changed;
    };
    Records base, file;
    std::vector<HeldRecord> here;
    for (int count = _draw(7); count > 0; --count) base.push_back(anyTwin());
    for (const DictionaryRef& record : base) {
      if (!oneIn(4)) here.push_back({oneIn(2) ? record : marked(record, "h"), record});
      if (!oneIn(4)) file.push_back(oneIn(2) ? record : marked(record, "f"));
    }
    for (int count = _draw(3); count > 0; --count) {
      here.push_back({marked(anyTwin(), "h"), nullptr});
    }
    for (int count = _draw(3); count > 0; --count) file.push_back(marked(anyTwin(), "f"));
    if (!file.empty()) {
      std::rotate(file.begin(), file.begin() + _draw(int(file.size())), file.end());
    }
    return {std::move(base), std::move(here), std::move(file)};
  }

 private:
  bool oneIn(int count) const { return _draw(count) == 0; }

  DictionaryRef anyTwin() const {
    const DictionaryRef record = Dictionary::make({{"k", _draw(2)}});
    const int identifier = _draw(4);
    if (identifier > 0) record->set(kAccountIdentifier, std::string(1, char('a' + identifier)));
    return record;
  }

  Maybe anyNumber() const {
    const int number = _draw(4);
    return number == 0 ? Maybe() : number == 1 ? Maybe(Value()) : Maybe(number);
  }

  Maybe anySet() const {
    if (oneIn(5)) return std::nullopt;
    if (oneIn(12)) return Value(1);
    const ArrayRef set = Array::make();
    for (int count = _draw(4); count > 0; --count)
      set->append(std::string(1, char('x' + _draw(3))));
    if (oneIn(12)) set->append(1);
    return set;
  }

  Maybe anyChildren(const Maybe& base) const {
    if (oneIn(5)) return std::nullopt;
    if (oneIn(12)) return Value("no list");
    const ArrayRef list = Array::make();
    for (const DictionaryRef& child :
         anyList(true, isChildren(base) ? recordsOf(base) : Records())) {
      list->append(child);
    }
    if (oneIn(12)) list->append(Dictionary::make());
    return list;
  }

  DictionaryRef anyRecord(const String& identifier, bool isChild, const DictionaryRef& base) const {
    const DictionaryRef record = Dictionary::make({{kAccountIdentifier, identifier}});
    const auto fill = [&](const String& key, const auto& any) {
      const Maybe value = base && oneIn(2) ? at(base, key) : any();
      if (value) record->set(key, *value);
    };
    for (const char* key : {"k", "l"}) fill(key, [&] { return anyNumber(); });
    for (const String& key : {kAccountEnabledDataclasses, kAccountProvisionedDataclasses}) {
      fill(key, [&] { return anySet(); });
    }
    fill(kAccountChildAccounts, [&]() -> Maybe {
      return isChild ? Maybe(Array::make({_draw(3)}))
                     : anyChildren(at(base, kAccountChildAccounts));
    });
    return record;
  }

  Records anyList(bool isOfChildren, const Records& base = {}) const {
    Records list;
    for (const char* identifier : {"a", "b", "c", "d"}) {
      if (oneIn(4)) continue;
      const DictionaryRef before = find(base, identifier);
      const DictionaryRef record =
          before && oneIn(3) ? before->mutableCopy() : anyRecord(identifier, isOfChildren, before);
      list.insert(list.begin() + _draw(int(list.size()) + 1), record);
    }
    return list;
  }

  const Draw& _draw;
};

}  // namespace

ThreeLists drawnLists(const Draw& draw) {
  return World(draw).lists();
}

ThreeListsOfTwins drawnTwins(const Draw& draw) {
  return World(draw).twins();
}

}  // namespace tallbook::test
