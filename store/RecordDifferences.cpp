// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/RecordDifferences.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "tallbook/BasicAccount.h"
#include "tallbook/Vocabulary.h"

#include "store/ChangedKeys.h"
#include "store/IdentifierTable.h"
#include "store/RecordPairing.h"
#include "store/TBRuntimeFixMailAccount.h"

namespace tallbook {
namespace {

using Records = std::vector<DictionaryRef>;
using Account = std::shared_ptr<BasicAccount>;

/// Which records are compared.
enum class Compared { Accounts, AllRecords };

/// One record as it was and as it is, null where it does not count, and what a store makes of it:
/// null where it makes no account.
struct Sides {
  DictionaryRef before, now;
  Account accountBefore, accountNow;

  const DictionaryRef& present() const { return now ? now : before; }
};

std::optional<Value> valueOf(const Value* value) {
  return value ? std::optional(*value) : std::nullopt;
}

ArrayRef enabledDataclassesOf(const Account& account) {
  const ArrayRef enabled = account ? account->enabledDataclasses() : nullptr;
  return enabled ? enabled->frozenCopy() : nullptr;
}

Records childrenOf(const DictionaryRef& record) {
  return dictionariesIn(record[kAccountChildAccounts].array());
}

class Comparison {
 public:
  /// Compares the top-level records where there is no parent, else the parent's children.
  explicit Comparison(Compared compared, const Sides* parent = nullptr)
      : _compared(compared), _parent(parent) {}

  AccountsFileDifferences compare(const Records& before, const Records& now) && {
    // Mostly one record of many differs; only what lies between the first and the last that do is
    // paired, unless it shares an identifier with what lies around it.
    const auto [firstBefore, firstNow] =
        std::mismatch(before.begin(), before.end(), now.begin(), now.end(), equalContent);
    const auto [lastBefore, lastNow] =
        std::mismatch(before.rbegin(), std::make_reverse_iterator(firstBefore), now.rbegin(),
                      std::make_reverse_iterator(firstNow), equalContent);
    const Records differentBefore(firstBefore, lastBefore.base());
    const Records differentNow(firstNow, lastNow.base());
    IdentifierTable<bool> different;
    for (const Records* records : {&differentBefore, &differentNow}) {
      for (const DictionaryRef& record : *records) {
        if (const String identifier = record[kAccountIdentifier].string()) different[identifier];
      }
    }
    const auto isMet = [&](const DictionaryRef& record) {
      const auto identifier = record[kAccountIdentifier].stringView();
      return identifier && different.contains(*identifier);
    };
    const bool isAnyShared = std::any_of(before.begin(), firstBefore, isMet) ||
                             std::any_of(lastBefore.base(), before.end(), isMet);
    isAnyShared ? pair(before, now) : pair(differentBefore, differentNow);
    return std::move(_differences);
  }

 private:
  void pair(const Records& before, const Records& now) {
    std::vector<HeldRecord> held;
    held.reserve(now.size());
    for (const DictionaryRef& record : now) held.push_back({record, nullptr});
    const RecordPairing pairing(before, held, {});
    std::vector<bool> isKept(before.size());
    for (const auto& others : pairing.ofHere) {
      if (others.base != kNoRecord) isKept[others.base] = true;
    }
    for (std::size_t at = 0; at < before.size(); ++at) {
      if (!isKept[at]) add(before[at], nullptr);
    }
    std::size_t next = 0;
    for (std::size_t at = 0; at < now.size(); ++at) {
      const std::size_t counterpart = pairing.ofHere[at].base;
      if (counterpart == kNoRecord) {
        add(nullptr, now[at]);
        continue;
      }
      if (counterpart < next) _differences.isReordered = true;
      next = counterpart + 1;
      add(before[counterpart], now[at]);
    }
  }

  void add(const DictionaryRef& before, const DictionaryRef& now) {
    if (equalContent(before, now)) return;
    Sides sides{before, now, accountOf(before, &Sides::accountBefore),
                accountOf(now, &Sides::accountNow)};
    if (_compared == Compared::Accounts) {
      if (!sides.accountBefore) sides.before = nullptr;
      if (!sides.accountNow) sides.now = nullptr;
    }
    if (!sides.before && !sides.now) return;
    ChangedAccount change = changeOf(sides);
    std::vector<ChangedAccount> children;
    if (!_parent) {
      children = Comparison(_compared, &sides)
                     .compare(childrenOf(change.before), childrenOf(change.now))
                     .accounts;
    }
    addKeys(change, !children.empty());
    if (change.kind != ChangedAccount::Kind::Changed || !change.keys.empty()) {
      _differences.accounts.push_back(std::move(change));
    }
    std::ranges::move(children, std::back_inserter(_differences.accounts));
  }

  /// As loading it would do: a copy of it is repaired where it has to be.
  Account accountOf(const DictionaryRef& record, Account Sides::*parent) {
    if (!record || !BasicAccount::whyNoRecord(record).empty()) return nullptr;
    Account account = BasicAccount::initWithProperties(record);
    if (_parent) {
      account->setParentAccount(_parent->*parent);
      return account;
    }
    const FixerVerdict verdict =
        _fixer.fixBasicAccountIfNeededLoggingMessage(*account, "comparing accounts");
    return verdict == FixerVerdict::CannotBeFixed ? nullptr : account;
  }

  ChangedAccount changeOf(const Sides& sides) const {
    using Kind = ChangedAccount::Kind;
    ChangedAccount change;
    change.kind = !sides.before ? Kind::Added : !sides.now ? Kind::Removed : Kind::Changed;
    change.identifier = sides.present()[kAccountIdentifier].string();
    if (_parent) change.parent = _parent->present();
    change.type = sides.present()[kAccountType].string();
    change.dataclassesBefore = enabledDataclassesOf(sides.accountBefore);
    change.dataclassesNow = enabledDataclassesOf(sides.accountNow);
    change.before = sides.before;
    change.now = sides.now;
    return change;
  }

  static void addKeys(ChangedAccount& change, bool areChildrenTold) {
    const DictionaryRef none = Dictionary::make();
    change.keys =
        changedKeys(change.before ? *change.before : *none, change.now ? *change.now : *none);
    if (!areChildrenTold) return;
    std::erase_if(change.keys,
                  [](const ChangedKey& key) { return key.key == kAccountChildAccounts; });
  }

  Compared _compared;
  const Sides* _parent;
  TBRuntimeFixMailAccount _fixer;
  AccountsFileDifferences _differences;
};

}  // namespace

std::vector<ChangedAccount> changedAccounts(const std::vector<DictionaryRef>& before,
                                            const std::vector<DictionaryRef>& now) {
  return Comparison(Compared::Accounts).compare(before, now).accounts;
}

AccountsFileDifferences differencesBetween(const DictionaryRef& before, const DictionaryRef& now) {
  AccountsFileDifferences differences =
      Comparison(Compared::AllRecords)
          .compare(dictionariesIn(before[kPlistAccountsKey].array()),
                   dictionariesIn(now[kPlistAccountsKey].array()));
  differences.keys = changedKeys(*before, *now);
  std::erase_if(differences.keys,
                [](const ChangedKey& key) { return key.key == kPlistAccountsKey; });
  return differences;
}

std::vector<ChangedKey> changedKeys(const Dictionary& before, const Dictionary& now) {
  std::vector<ChangedKey> keys;
  forEachChangedKey(before, now, [&](const String& key, const Value* old, const Value* present) {
    keys.push_back({key, valueOf(old), valueOf(present)});
  });
  return keys;
}

std::vector<DictionaryRef> dictionariesIn(const ArrayRef& list) {
  std::vector<DictionaryRef> dictionaries;
  dictionaries.reserve(list.size());
  for (const Value& element : list) {
    if (DictionaryRef dictionary = element.dictionary()) {
      dictionaries.push_back(std::move(dictionary));
    }
  }
  return dictionaries;
}

}  // namespace tallbook
