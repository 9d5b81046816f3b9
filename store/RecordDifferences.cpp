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

/// One record as it was and as it is, and what a store makes of it: null where it makes no account.
struct Sides {
  DictionaryRef before, now;
  Account accountBefore, accountNow;

  const DictionaryRef& present() const { return accountNow ? now : before; }
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
  explicit Comparison(const Sides* parent = nullptr) : _parent(parent) {}

  std::vector<ChangedAccount> compare(const Records& before, const Records& now) && {
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
    return std::move(_changes);
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
    for (std::size_t at = 0; at < now.size(); ++at) {
      const std::size_t counterpart = pairing.ofHere[at].base;
      add(counterpart == kNoRecord ? nullptr : before[counterpart], now[at]);
    }
  }

  void add(const DictionaryRef& before, const DictionaryRef& now) {
    if (equalContent(before, now)) return;
    const Sides sides{before, now, accountOf(before, &Sides::accountBefore),
                      accountOf(now, &Sides::accountNow)};
    if (!sides.accountBefore && !sides.accountNow) return;
    ChangedAccount change = changeOf(sides);
    std::vector<ChangedAccount> children;
    if (!_parent) {
      children = Comparison(&sides).compare(childrenOf(change.before), childrenOf(change.now));
    }
    addKeys(change, !children.empty());
    if (change.kind != ChangedAccount::Kind::Changed || !change.keys.empty()) {
      _changes.push_back(std::move(change));
    }
    std::ranges::move(children, std::back_inserter(_changes));
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
    change.kind = !sides.accountBefore ? Kind::Added
                  : !sides.accountNow  ? Kind::Removed
                                       : Kind::Changed;
    change.identifier = sides.present()[kAccountIdentifier].string();
    if (_parent) change.parent = _parent->present();
    change.type = sides.present()[kAccountType].string();
    change.dataclassesBefore = enabledDataclassesOf(sides.accountBefore);
    change.dataclassesNow = enabledDataclassesOf(sides.accountNow);
    if (sides.accountBefore) change.before = sides.before;
    if (sides.accountNow) change.now = sides.now;
    return change;
  }

  void addKeys(ChangedAccount& change, bool areChildrenTold) const {
    const DictionaryRef none = Dictionary::make();
    forEachChangedKey(change.before ? *change.before : *none, change.now ? *change.now : *none,
                      [&](const String& key, const Value* before, const Value* now) {
                        if (areChildrenTold && key == kAccountChildAccounts) return;
                        change.keys.push_back({key, valueOf(before), valueOf(now)});
                      });
  }

  const Sides* _parent;
  TBRuntimeFixMailAccount _fixer;
  std::vector<ChangedAccount> _changes;
};

}  // namespace

std::vector<ChangedAccount> differencesBetween(const std::vector<DictionaryRef>& before,
                                               const std::vector<DictionaryRef>& now) {
  return Comparison().compare(before, now);
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
