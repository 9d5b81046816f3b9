// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/WatchedAccounts.h"

#include "tallbook/Vocabulary.h"

#include "store/AccountsMerge.h"
#include "store/RecordDifferences.h"

namespace tallbook {
namespace {

constexpr std::string_view kVersionKey = "BaselineVersion";
constexpr int kVersion = 1;

}  // namespace

std::vector<ChangedAccount> WatchedAccounts::changesTo(std::vector<DictionaryRef> records) {
  std::vector<ChangedAccount> changes = changedAccounts(_records, records);
  _records = std::move(records);
  return changes;
}

void WatchedAccounts::leaveOut(const std::vector<DictionaryRef>& before,
                               const std::vector<DictionaryRef>& after) {
  const std::vector<Value> known = withChangesCarriedOver(_records, before, after);
  _records.clear();
  _records.reserve(known.size());
  // What was saved goes on changing in its store.
  for (const Value& record : known) _records.push_back(record.dictionary()->frozenCopy());
}

DictionaryRef WatchedAccounts::baseline() const {
  return Dictionary::makeFrozen(
      {{kVersionKey, kVersion},
       {kPlistAccountsKey, Array::makeFrozen({_records.begin(), _records.end()})}});
}

std::optional<std::vector<DictionaryRef>> WatchedAccounts::recordsOf(const Value& baseline) {
  const DictionaryRef topLevel = baseline.dictionary();
  const ArrayRef records = topLevel[kPlistAccountsKey].array();
  if (topLevel[kVersionKey] != Value(kVersion) || !records) return std::nullopt;
  return dictionariesIn(records->frozenCopy());
}

}  // namespace tallbook
