// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "tallbook/Value.h"

namespace tallbook {

/// Merges one record three ways, by its top-level keys: `original` is the common ancestor of
/// `inMemory` and `onDisk`. A key that differs between `inMemory` and `original` is taken from
/// `inMemory`, its absence included; every other key from `onDisk`. Values are never merged inside.
///
/// `inMemory` itself when `original` or `onDisk` is null or empty, else a new dictionary.
DictionaryRef mergedProperties(const DictionaryRef& inMemory, const DictionaryRef& original,
                               const DictionaryRef& onDisk);

}  // namespace tallbook
