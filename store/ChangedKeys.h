// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "tallbook/Value.h"

namespace tallbook {

/// Whether both sides of a key, null for its absence, are the same.
inline bool isSame(const Value* a, const Value* b) noexcept {
  return a && b ? *a == *b : a == b;
}

/// Stores the value under the key, or removes the key where the value is null.
inline void put(Dictionary& dictionary, const String& key, const Value* value) {
  if (value) {
    dictionary.set(key, *value);
  } else {
    dictionary.remove(key);
  }
}

/// Calls `visit(key, valueBefore, valueNow)` for each key that was added, changed or removed, with
/// null for an absent value. `visit` must change neither dictionary.
template <class Visit>
void forEachChangedKey(const Dictionary& before, const Dictionary& now, Visit visit) {
  // Most records of a save were not touched.
  if (now.sharesStorageWith(before)) return;
  for (const auto& [key, value] : now) {
    const Value* const old = before.find(key);
    if (!isSame(old, &value)) visit(key, old, &value);
  }
  for (const auto& [key, value] : before) {
    if (!now.contains(key)) visit(key, &value, nullptr);
  }
}

}  // namespace tallbook
