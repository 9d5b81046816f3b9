// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "tallbook/AccountsFileState.h"
#include "tallbook/AccountsManager.h"
#include "tallbook/ChangedAccount.h"
#include "tallbook/Export.h"
#include "tallbook/Value.h"

namespace tallbook {

/// Hears of every change of the accounts file, whichever process makes it.
///
/// A watcher compares: it holds the accounts as they were at its last answer, and answers how the
/// file differs from them. So nothing can be missed for good, however much happens between two
/// answers, and what was changed and changed back is no change. Its descriptor tells when it is
/// worth asking.
///
///     const auto watcher = AccountsWatcher::fromNow();
///     for (;;) {
///       for (const ChangedAccount& change : watcher->changes().accounts) ...
///       wait until watcher->descriptor() is readable
///     }
///
/// Ask before the first wait, in that order: what a watcher made from a store or a baseline has to
/// tell already makes nothing readable. It starts no thread and takes no time while nothing
/// happens. Watchers are thread-bound; one that leaves out a store's changes is one thread-bound
/// whole with that store.
class TALLBOOK_EXPORT AccountsWatcher {
 public:
  /// What happened since the last answer.
  struct Answer {
    /// Removed accounts first, in the order that they had, then the others in the order of the
    /// file; each account's children behind it, by the same rule.
    ///
    /// An account is what a store would load of the file. Records are the same account, or the same
    /// child of an account, when their identifiers are. Of those that share one with others, and of
    /// those without, nobody can tell which is which: they are the same while their content is, and
    /// their change is a removal and an addition. The order of the accounts, and what else the file
    /// holds, are no changes.
    std::vector<ChangedAccount> accounts;
    /// Given once, when the file turned out to be unreadable or no accounts file: no account counts
    /// as removed on that account, and what changed is told when it can be read again. Given once
    /// more then, whatever changed. A file that is missing is one without accounts.
    std::optional<AccountsFileState> newState;

    /// Whether there is anything to deal with.
    explicit operator bool() const noexcept { return !accounts.empty() || newState.has_value(); }
  };

  // Creation. Never throws for a file that is missing or cannot be read.

  /// Hears what happens from now on. Where the file cannot be read now, nothing is known of the
  /// accounts: all of them are told as added when it can be.
  [[nodiscard]] static std::unique_ptr<AccountsWatcher> fromNow();
  /// Hears how the file differs from what the store last read or wrote of its own: what others
  /// changed, and the store has not taken up.
  [[nodiscard]] static std::unique_ptr<AccountsWatcher> fromStore(const AccountsManager& store);
  /// Hears what happened since `baseline` gave this value, in another process or before a restart.
  /// Null for a value that is no baseline, or one of a later version of the library.
  [[nodiscard]] static std::unique_ptr<AccountsWatcher> since(const Value& baseline);

  ~AccountsWatcher();
  AccountsWatcher(const AccountsWatcher&) = delete;
  AccountsWatcher& operator=(const AccountsWatcher&) = delete;

  /// Readable when the file may have changed, for poll, epoll (level- or edge-triggered), and
  /// whatever event loop takes a descriptor; not readable any more after `changes`, until something
  /// happens again. The same for the watcher's whole life, whose property it is: do not read from
  /// it or close it. -1 where the system has no watch to give: then `changes` looks at the file
  /// whenever it is called.
  ///
  /// A save wakes once, when the file is replaced, and one that has nothing to write wakes nobody.
  /// It may be readable without a change, as when another file of the folder is replaced.
  int descriptor() const noexcept;
  /// Why the descriptor may not tell of the next change: a folder that may not be read, a link that
  /// leads nowhere, or the system's limits; else none. Call `changes` from time to time then.
  std::error_code descriptorProblem() const noexcept;

  /// What happened since the last answer. Reads the file only where it may have changed. Throws
  /// InternalConsistencyFailure where the account type catalogue cannot be read; nothing is lost by
  /// that.
  [[nodiscard]] Answer changes();

  /// What the last answer told up to, as a property list: `since` takes it back. It holds the
  /// accounts themselves, so keep it as private as the file is. Keep it when an answer was dealt
  /// with; one that was kept too early misses what was never dealt with.
  [[nodiscard]] DictionaryRef baseline() const;

  /// From now on what this store changes by its saves is not told, and all that others change still
  /// is: changes of the same account, the same list of dataclasses, even in the same save that
  /// merged them. Where both changed one value, its change is told.
  ///
  /// A store may be left out of several watchers, and several stores of one; each may be gone
  /// before the other.
  void leaveOutChangesOf(AccountsManager& store);

  /// Sends the signal "com.orvane.Tallbook1.AccountsChanged" on the device's message bus, once for
  /// each of the accounts, with names and without values. Whether the bus has it.
  static bool announceOnBus(const std::vector<ChangedAccount>& accounts);

 private:
  struct State;
  TALLBOOK_INTERNAL explicit AccountsWatcher(std::unique_ptr<State> state);

  std::unique_ptr<State> _state;
};

}  // namespace tallbook
