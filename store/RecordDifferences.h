// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <vector>

#include "tallbook/ChangedAccount.h"
#include "tallbook/Value.h"

namespace tallbook {

/// What differs between two states of the accounts file, in the order and by the rules that
/// `AccountsWatcher::Answer` describes. The records must be frozen. Takes one comparison of the
/// records, and little more for each that differs.
std::vector<ChangedAccount> changedAccounts(const std::vector<DictionaryRef>& before,
                                            const std::vector<DictionaryRef>& now);

/// The dictionaries of a list of records; none for null.
std::vector<DictionaryRef> dictionariesIn(const ArrayRef& list);

}  // namespace tallbook
