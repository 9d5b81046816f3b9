// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// What a watcher tells, held against the file: told of the changes alone, one has to end up with
// the accounts that the file has.

#include <algorithm>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "fuzz/Check.h"
#include "fuzz/DrawnAccounts.h"
#include "fuzz/MemoryDevice.h"
#include "fuzz/Target.h"
#include "store/RecordDifferences.h"
#include "store/WatchedAccounts.h"

namespace tallbook::fuzz {
namespace {

using Records = std::vector<DictionaryRef>;

bool isAccount(const DictionaryRef& record) {
  return AccountsManager::initWithAccounsInfoArray(Array::make({record}))->count() == 1;
}

/// Whether both have the same records, in whatever order.
bool areSame(const Records& a, const Records& b) {
  return std::ranges::is_permutation(a, b, equalContent);
}

/// The accounts of a list of records as somebody knows them who hears of changes only: what is no
/// account for a store is none here.
class Picture {
 public:
  Picture() = default;
  explicit Picture(const Records& records) {
    for (const DictionaryRef& record : records) {
      if (isAccount(record)) _accounts.push_back(accountOf(record));
    }
  }

  void apply(const std::vector<ChangedAccount>& changes) {
    std::size_t current = 0;
    for (const ChangedAccount& change : changes) {
      if (change.parent) {
        if (!isAt(current, change.parent)) current = placeOf(change.parent);
        applyToChild(_accounts[current], change);
      } else {
        current = applyToAccount(change);
      }
    }
    std::erase_if(_accounts, [](const Account& account) {
      check(!account.isLeaving || account.children.empty(), "the children of one that went go too");
      return account.isLeaving;
    });
  }

  friend bool operator==(const Picture& a, const Picture& b) {
    return std::ranges::is_permutation(
        a._accounts, b._accounts, [](const Account& one, const Account& other) {
          return equalContent(one.own, other.own) && areSame(one.children, other.children);
        });
  }

 private:
  struct Account {
    DictionaryRef own;  ///< without its children
    Records children;
    bool isLeaving = false;
  };

  static DictionaryRef withoutChildren(const DictionaryRef& record) {
    const DictionaryRef own = record->mutableCopy();
    own->remove(kAccountChildAccounts);
    return own;
  }

  static Account accountOf(const DictionaryRef& record) {
    Account account{withoutChildren(record), {}};
    for (const DictionaryRef& child : dictionariesIn(record[kAccountChildAccounts].array())) {
      if (BasicAccount::whyNoRecord(child).empty()) account.children.push_back(child);
    }
    return account;
  }

  bool isAt(std::size_t place, const DictionaryRef& record) const {
    return place < _accounts.size() && equalContent(_accounts[place].own, withoutChildren(record));
  }

  std::size_t placeOf(const DictionaryRef& record) const {
    std::size_t place = 0;
    while (place < _accounts.size() && !(isAt(place, record) && !_accounts[place].isLeaving)) {
      ++place;
    }
    check(place < _accounts.size(), "what is told of is known");
    return place;
  }

  std::size_t applyToAccount(const ChangedAccount& change) {
    if (change.kind == ChangedAccount::Kind::Added) {
      check(!change.before && change.now, "an added account has only what it is now");
      _accounts.push_back({withoutChildren(change.now), {}});
      return _accounts.size() - 1;
    }
    const std::size_t place = placeOfWhole(change.before);
    Account& account = _accounts[place];
    if (change.kind == ChangedAccount::Kind::Removed) {
      account.isLeaving = true;
      return place;
    }
    // The children are known apart from what the record has under their key.
    std::vector<ChangedKey> keys = change.keys;
    std::erase_if(keys, [](const ChangedKey& key) { return key.key == kAccountChildAccounts; });
    apply(keys, account.own);
    check(equalContent(account.own, withoutChildren(change.now)), "all changed keys are told");
    return place;
  }

  /// Of twins the one with these children.
  std::size_t placeOfWhole(const DictionaryRef& record) const {
    const Account wanted = accountOf(record);
    const auto found = std::ranges::find_if(_accounts, [&](const Account& account) {
      return !account.isLeaving && equalContent(account.own, wanted.own) &&
             areSame(account.children, wanted.children);
    });
    check(found != _accounts.end(), "what went or changed was known as it was");
    return std::size_t(found - _accounts.begin());
  }

  static void applyToChild(Account& account, const ChangedAccount& change) {
    Records& children = account.children;
    if (change.kind == ChangedAccount::Kind::Added) {
      children.push_back(change.now);
      return;
    }
    const auto child = std::ranges::find_if(
        children, [&](const DictionaryRef& known) { return equalContent(known, change.before); });
    check(child != children.end(), "a child that went or changed was known as it was");
    if (change.kind == ChangedAccount::Kind::Removed) {
      children.erase(child);
      return;
    }
    *child = (*child)->mutableCopy();
    apply(change.keys, *child);
  }

  static void apply(const std::vector<ChangedKey>& keys, const DictionaryRef& record) {
    for (const ChangedKey& key : keys) {
      const Value* known = record->find(key.key);
      check(bool(known) == key.before.has_value() && (!known || *known == *key.before),
            "a key is told as it was");
      key.now ? record->set(key.key, *key.now) : record->remove(key.key);
    }
  }

  std::vector<Account> _accounts;
};

Records frozen(const ArrayRef& records) {
  return dictionariesIn(records->frozenCopy());
}

/// The records after somebody has been at them.
ArrayRef changed(Drawn& drawn, const ArrayRef& records) {
  const ArrayRef now = Array::make();
  for (const Value& record : records) {
    if (drawn.oneIn(8)) continue;
    const DictionaryRef copy = record.dictionary() ? record.dictionary()->mutableCopy() : nullptr;
    while (copy && drawn.oneIn(3)) {
      const String key = drawnKey(drawn);
      drawn.oneIn(4) ? copy->remove(key) : copy->set(key, drawnValueOf(drawn, key));
    }
    const ArrayRef children = copy[kAccountChildAccounts].array();
    if (children && drawn.oneIn(3)) copy->set(kAccountChildAccounts, changed(drawn, children));
    now->append(copy ? Value(copy) : record);
  }
  while (drawn.oneIn(4)) now->append(drawnRecord(drawn));
  for (std::size_t at = 0; at + 1 < now->size() && drawn.oneIn(4); ++at) {
    const Value first = (*now)[at];
    now->replace(at, (*now)[at + 1]);
    now->replace(at + 1, first);
  }
  return now;
}

}  // namespace

void tryInput(std::string_view input) {
  static MemoryDevice device;
  device.silence();
  Drawn drawn(input);
  ArrayRef list = drawnRecords(drawn);
  Records before = frozen(list);
  WatchedAccounts watched(before);
  Picture picture(before);
  while (!drawn.isUsedUp()) {
    list = changed(drawn, list);
    const Records now = frozen(list);

    WatchedAccounts other(before);
    other.leaveOut(before, now);
    check(other.changesTo(now).empty(), "nothing is told of what is left out");

    picture.apply(watched.changesTo(now));
    check(picture == Picture(now), "who heard of all changes knows what the file has");
    check(watched.changesTo(now).empty(), "nothing is told twice");
    const auto kept = WatchedAccounts::recordsOf(watched.baseline());
    check(kept && std::ranges::equal(*kept, now, equalContent), "a baseline holds the accounts");
    before = now;
  }
}

}  // namespace tallbook::fuzz
