#include "store/ChangeDetection.h"

#include <algorithm>
#include <string_view>

#include "tallbook/Vocabulary.h"

namespace tallbook {
namespace {

std::vector<String> enabledDataclasses(const DictionaryRef& properties) {
  std::vector<String> enabled;
  const ArrayRef stored = properties ? (*properties)[kAccountEnabledDataclasses].array() : nullptr;
  if (!stored) return enabled;
  for (const Value& dataclass : *stored) {
    if (String name = dataclass.string()) enabled.push_back(std::move(name));
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

void addOnce(std::vector<String>& list, const String& dataclass) {
  if (std::ranges::find(list, dataclass) == list.end()) list.push_back(dataclass);
}

void addDifference(std::vector<String>& list, const std::vector<String>& from,
                   const std::vector<String>& without) {
  for (const String& dataclass : from) {
    if (std::ranges::find(without, dataclass) == without.end()) addOnce(list, dataclass);
  }
}

}  // namespace

std::vector<String> dataclassesConcernedByChange(AccountChange change,
                                                 const DictionaryRef& original,
                                                 const DictionaryRef& current) {
  std::vector<String> concerned;
  if (change == AccountChange::Added || change == AccountChange::Removed) {
    addDifference(concerned,
                  enabledDataclasses(change == AccountChange::Added ? current : original), {});
    return concerned;
  }
  if (!original || !current || original->sharesStorageWith(*current)) return concerned;
  const std::vector<String> before = enabledDataclasses(original);
  const std::vector<String> after = enabledDataclasses(current);
  addDifference(concerned, before, after);
  addDifference(concerned, after, before);
  if (!after.empty() && differInComparedKeys(*original, *current)) {
    addDifference(concerned, after, {});
  }
  return concerned;
}

}  // namespace tallbook
