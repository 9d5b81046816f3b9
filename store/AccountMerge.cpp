#include "store/AccountMerge.h"

namespace tallbook {

DictionaryRef mergedProperties(const DictionaryRef& inMemory, const DictionaryRef& original,
                               const DictionaryRef& onDisk) {
  if (!original || original->empty() || !onDisk || onDisk->empty()) return inMemory;
  DictionaryRef result = onDisk->mutableCopy();
  // Most records of a save were not touched; their merge is the file's version.
  if (inMemory->sharesStorageWith(*original)) return result;
  for (const auto& [key, value] : *inMemory) {
    const Value* before = original->find(key);
    if (!before || !(*before == value)) result->set(key, value);
  }
  for (const auto& [key, value] : *original) {
    if (!inMemory->contains(key)) result->remove(key);
  }
  return result;
}

}  // namespace tallbook
