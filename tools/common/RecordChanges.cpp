#include "tools/common/RecordChanges.h"

#include "tallbook/Vocabulary.h"

#include "tools/common/Dataclasses.h"

namespace tallbook::tool {
namespace {

using Kind = KeyChange::Kind;

bool isListOrNothing(const Value& value) {
  return value.isNull() || value.array();
}

void addElements(std::vector<KeyChange>& changes, Kind kind, const String& key, const Value& of,
                 const Value& without) {
  const ArrayRef elements = of.array();
  const ArrayRef others = without.array();
  if (!elements) return;
  for (const Value& element : *elements) {
    if (!element.string() || (others && others->contains(element))) continue;
    changes.push_back({kind, key, element.string(), {}, {}});
  }
}

void compareKey(std::vector<KeyChange>& changes, const String& key, const Value& before,
                const Value& after) {
  if (before == after) return;
  const bool areLists = isListOrNothing(before) && isListOrNothing(after);
  if (areLists && key == kAccountChildAccounts) return;
  const std::size_t known = changes.size();
  if (areLists && (key == kAccountEnabledDataclasses || key == kAccountProvisionedDataclasses)) {
    addElements(changes, Kind::Added, key, after, before);
    addElements(changes, Kind::Removed, key, before, after);
  }
  if (changes.size() > known) return;
  const Kind kind = before.isNull() ? Kind::Added : after.isNull() ? Kind::Removed : Kind::Changed;
  changes.push_back({kind, key, nullptr, before, after});
}

}  // namespace

std::vector<KeyChange> changesBetween(const Dictionary& before, const Dictionary& after) {
  std::vector<KeyChange> changes;
  // Most keys stand where they stood, so that few have to be looked for.
  auto next = after.begin();
  std::size_t kept = 0;
  for (const auto& [key, value] : before) {
    const bool isNext = next != after.end() && next->key == key;
    const Value* now = isNext ? &next->value : after.find(key);
    if (isNext) ++next;
    if (now) ++kept;
    compareKey(changes, key, value, now ? *now : Value());
  }
  if (kept == after.size()) return changes;
  for (const auto& [key, value] : after) {
    if (!before.contains(key)) compareKey(changes, key, {}, value);
  }
  return changes;
}

std::string wordsFor(const KeyChange& change) {
  const bool isAdded = change.kind == Kind::Added;
  if (change.dataclass) {
    const std::string name = shortName(change.dataclass);
    if (change.key == kAccountEnabledDataclasses) return name + (isAdded ? " on" : " off");
    return name + (isAdded ? " provisioned" : " no longer provisioned");
  }
  return change.key.str() + (isAdded                        ? " added"
                             : change.kind == Kind::Removed ? " removed"
                                                            : " changed");
}

}  // namespace tallbook::tool
