// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <vector>

#include "tallbook/Value.h"

#include "store/AccountsMerge.h"

namespace tallbook::test {

using Records = std::vector<DictionaryRef>;
using Maybe = std::optional<Value>;

// What the merge of whole accounts has to be, as slow and as plain as it can be said. Where it is
// something else, the checks throw std::logic_error.

/// Of accounts, and children, whose identifiers are there and differ.
void checkMerge(const Records& base, const Records& here, const Records& file);
/// Of accounts that share their identifiers, or have none. Each change has left a mark of its own:
/// a value under "h" one that was made here, under "f" one in the file.
void checkMergeOfTwins(const Records& base, const std::vector<HeldRecord>& here,
                       const Records& file);

// A record's value, a list's record, and the records of a value that is a list of children.
Maybe at(const DictionaryRef& record, const String& key);
DictionaryRef find(const Records& records, const String& identifier);
bool isChildren(const Maybe& value);
Records recordsOf(const Maybe& value);

}  // namespace tallbook::test
