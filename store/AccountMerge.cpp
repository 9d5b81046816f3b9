// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/AccountMerge.h"

#include "store/ChangedKeys.h"

namespace tallbook {

DictionaryRef mergedProperties(const DictionaryRef& inMemory, const DictionaryRef& original,
                               const DictionaryRef& onDisk) {
  if (!original || original->empty() || !onDisk || onDisk->empty()) return inMemory;
  DictionaryRef result = onDisk->mutableCopy();
  forEachChangedKey(*original, *inMemory, [&](const String& key, const Value*, const Value* now) {
    put(*result, key, now);
  });
  return result;
}

}  // namespace tallbook
