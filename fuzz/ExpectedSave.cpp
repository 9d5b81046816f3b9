// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "fuzz/ExpectedSave.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "tallbook/AccountsFileContents.h"
#include "tallbook/Vocabulary.h"

#include "fuzz/Check.h"

namespace tallbook::fuzz {
namespace {

using Records = std::vector<DictionaryRef>;

String identifierOf(const DictionaryRef& record) {
  return record[kAccountIdentifier].string();
}

/// Empty where the file has none.
ArrayRef accountsIn(const ExpectedSave::Bytes& file) {
  const ArrayRef accounts = file ? accountsFileFromBytes(*file).records() : nullptr;
  return accounts ? accounts : Array::make();
}

Records recordsIn(const ArrayRef& accounts) {
  Records records;
  for (const Value& element : accounts) {
    if (const DictionaryRef record = element.dictionary()) records.push_back(record);
  }
  return records;
}

std::vector<Value> othersIn(const ArrayRef& accounts) {
  std::vector<Value> others;
  std::ranges::copy_if(accounts, std::back_inserter(others),
                       [](const Value& element) { return !element.dictionary(); });
  return others;
}

Records recordsOf(const AccountsManager& store) {
  Records records;
  for (const auto& account : *store.allBasicAccounts()) {
    records.push_back(account->propertiesToSave()->frozenCopy());
  }
  return records;
}

class ByIdentifier {
 public:
  explicit ByIdentifier(const Records& records) {
    for (const DictionaryRef& record : records) {
      if (const String identifier = identifierOf(record)) _records[identifier].push_back(record);
    }
  }

  bool isShared(const String& identifier) const {
    const auto found = _records.find(identifier);
    return found != _records.end() && found->second.size() > 1;
  }
  /// Null for none, and where several share the identifier.
  DictionaryRef of(const String& identifier) const {
    const auto found = _records.find(identifier);
    const bool isOne = found != _records.end() && found->second.size() == 1;
    return isOne ? found->second.front() : nullptr;
  }
  void addIdentifiersTo(std::set<String>& identifiers) const {
    for (const auto& [identifier, records] : _records) identifiers.insert(identifier);
  }

 private:
  std::map<String, Records> _records;
};

Records namelessOf(Records records) {
  std::erase_if(records, [](const DictionaryRef& record) { return identifierOf(record); });
  return records;
}

std::ptrdiff_t count(const Records& records, const DictionaryRef& content) {
  return std::ranges::count_if(
      records, [&](const DictionaryRef& record) { return equalContent(record, content); });
}

}  // namespace

ExpectedSave::ExpectedSave(const AccountsManager& store) {
  noteOrigins(store);
  _read = originsOf(store);
}

void ExpectedSave::note(const AccountsManager& store, const Bytes& file) {
  noteOrigins(store);
  _file = accountsIn(file);
  _loaded = recordsOf(*AccountsManager::init());
}

void ExpectedSave::noteOrigins(const AccountsManager& store) {
  // Of one that is known, changes since then must not count as what it was made of.
  for (const auto& account : *store.allBasicAccounts()) {
    _origins.try_emplace(account, account->originalProperties());
  }
}

ExpectedSave::Records ExpectedSave::originsOf(const AccountsManager& store) const {
  Records origins;
  for (const auto& account : *store.allBasicAccounts()) origins.push_back(_origins.at(account));
  return origins;
}

void ExpectedSave::checkSavedChanges(const AccountsManager& store, const Bytes& file) const {
  const ArrayRef after = accountsIn(file);
  const Records held = recordsOf(store);
  checkIdentified(held, after);
  checkNameless(store, held, after);
  check(othersIn(after) == othersIn(_file), "what is no record stays in the file");
}

void ExpectedSave::checkIdentified(const Records& held, const ArrayRef& file) const {
  const ByIdentifier read(_read);
  const ByIdentifier here(held);
  const ByIdentifier there(recordsIn(_file));
  const ByIdentifier after(recordsIn(file));
  std::set<String> identifiers;
  for (const ByIdentifier* records : {&read, &here, &there}) {
    records->addIdentifiersTo(identifiers);
  }
  for (const String& identifier : identifiers) {
    // Those that share one are told apart by their content: what became of which, nobody can say.
    if (read.isShared(identifier) || here.isShared(identifier) || there.isShared(identifier)) {
      continue;
    }
    check(!after.isShared(identifier), "a save makes no second record of " + identifier.str());
    const DictionaryRef before = read.of(identifier);
    if (equalContent(here.of(identifier), before)) {
      check(equalContent(after.of(identifier), there.of(identifier)),
            "what was not touched is as it was in the file: " + identifier.str());
    } else if (equalContent(there.of(identifier), before)) {
      check(equalContent(after.of(identifier), here.of(identifier)),
            "what only this store touched is as it has it: " + identifier.str());
    }
  }
}

void ExpectedSave::checkNameless(const AccountsManager& store, const Records& held,
                                 const ArrayRef& file) const {
  const Records read = namelessOf(_read);
  const Records origins = namelessOf(originsOf(store));
  const Records here = namelessOf(held);
  const Records there = namelessOf(recordsIn(_file));
  const Records after = namelessOf(recordsIn(file));
  const auto checkContent = [&](const DictionaryRef& content) {
    // An account of this store takes one of the file with it: that of its origin.
    const auto taken = std::max(count(read, content), count(origins, content));
    const auto left = std::max(count(there, content) - taken, std::ptrdiff_t{0});
    check(count(after, content) >= left + count(here, content),
          "a record without identifier stays in the file");
  };
  std::ranges::for_each(here, checkContent);
  std::ranges::for_each(there, checkContent);
}

void ExpectedSave::checkSavedAll(const AccountsManager& store, const Bytes& file) const {
  const ArrayRef after = accountsIn(file);
  const Records held = recordsOf(store);
  const Records origins = originsOf(store);
  const ByIdentifier here(held);
  const ByIdentifier loaded(_loaded);
  check(after.size() == held.size(), "a save of all accounts writes these and no other");
  for (std::size_t at = 0; at < held.size(); ++at) {
    const String identifier = identifierOf(held[at]);
    const bool isAlone = identifier && !here.isShared(identifier);
    const DictionaryRef there = isAlone ? loaded.of(identifier) : nullptr;
    const DictionaryRef written = (*after)[at].dictionary();
    if (!there || equalContent(there, origins[at]) || equalContent(there, held[at])) {
      check(equalContent(written, held[at]), "what nobody else touched is as this store has it");
    } else if (equalContent(held[at], origins[at])) {
      check(equalContent(written, there), "what was not touched is as it was in the file");
    }
  }
}

}  // namespace tallbook::fuzz
