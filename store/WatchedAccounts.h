// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "tallbook/ChangedAccount.h"
#include "tallbook/Value.h"

namespace tallbook {

/// The accounts as a watcher last told of them: what the file is compared with. Shared with the
/// stores whose changes are not to be told.
class WatchedAccounts {
 public:
  /// None of the records is null.
  explicit WatchedAccounts(std::vector<DictionaryRef> records) : _records(std::move(records)) {}

  /// What differs in the file, whose records these are; they are what is known from then on.
  std::vector<ChangedAccount> changesTo(std::vector<DictionaryRef> records);
  /// A save put the records `after` in the place of `before`: that is known, and nothing of it to
  /// be told.
  void leaveOut(const std::vector<DictionaryRef>& before, const std::vector<DictionaryRef>& after);

  /// As a property list.
  DictionaryRef baseline() const;
  /// The records of a baseline; nullopt for what is none.
  static std::optional<std::vector<DictionaryRef>> recordsOf(const Value& baseline);

 private:
  std::vector<DictionaryRef> _records;  // frozen
};

}  // namespace tallbook
