// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook-migrate/Story.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tallbook/Vocabulary.h"

#include "tools/common/ChangeWords.h"
#include "tools/common/Output.h"

namespace tallbook::migrate {
namespace {

using Place = AccountStory::Place;

// What loading does to a record is a repair.
constexpr std::string_view kLoading = "loading";
// The last stage; also what a save does to a record by merging it with the file.
constexpr std::string_view kSaving = "saving";

// Children are accounts of their own, so lists of them are left out.
std::vector<ChangedKey> changesBetween(const Dictionary& before, const Dictionary& after) {
  std::vector<ChangedKey> changes = changedKeys(before, after);
  const auto isList = [](const std::optional<Value>& value) { return !value || value->array(); };
  std::erase_if(changes, [&](const ChangedKey& each) {
    return each.key == kAccountChildAccounts && isList(each.before) && isList(each.now);
  });
  return changes;
}

std::vector<std::string> wordsForChanges(const Dictionary& before, const Dictionary& after) {
  std::vector<std::string> words;
  for (const ChangedKey& change : changesBetween(before, after)) {
    std::ranges::move(tool::wordsFor(change), std::back_inserter(words));
  }
  return words;
}

// A save merges with the file, whose values count where the store's were not changed.
std::vector<std::string> wordsForMerge(const Dictionary& stored, const Dictionary& written) {
  std::vector<std::string> words;
  for (const ChangedKey& change : changesBetween(stored, written)) {
    words.push_back(change.key.str() + " as the file had it");
  }
  return words;
}

// Whether a migration made it, and did not find it under some other key.
bool isMade(const Value& identifier, const DictionaryRef& before) {
  return !before || std::ranges::none_of(*before, [&](const Dictionary::Entry& entry) {
    return entry.value == identifier;
  });
}

}  // namespace

bool Story::mayGoOnWithoutCopy(const std::string& why) {
  tool::note("the accounts file as it is cannot be kept: " + why +
             (_goesOnWithoutCopy ? "" : "; --without-copy migrates all the same"));
  return _goesOnWithoutCopy;
}

void Story::stageEnded(const MigrationStage& ended) {
  const auto accounts = ended.store.allBasicAccounts();
  const std::vector<Row> before = std::exchange(_order, {});
  _order.reserve(accounts->size());
  for (const auto& account : *accounts) {
    const std::size_t known = _accounts.size();
    const DictionaryRef& record = account->properties();
    // Most are where they were.
    const std::size_t place = _order.size();
    const bool isInPlace = place < before.size() && _accounts[before[place]].record == record;
    const Row row = isInPlace ? before[place] : rowOf(record);
    visit(row, std::nullopt);
    if (row >= known) lookAtGiven(row, *account, ended.isSaved);
    _order.push_back(row);
  }
  settleMissing();
  _saveFailure.clear();
  if (ended.isSaved) {
    _lastSaved = stage();
    _writtenOrder = _order;
    _unloadable.clear();
    for (const RecordFault& fault : ended.store.unloadableRecords()) {
      const auto row = _rows.find(fault.record.dictionary().get());
      if (row != _rows.end()) _unloadable[row->second] = fault.why;
    }
  } else if (ended.store.saveFailure()) {
    _saveFailure = ended.store.saveFailure().text();
  }
  // Those of the last save that succeeded. Kept any longer, they would cost the saves memory.
  if (ended.name == kSaving) _written = ended.store._recordsAsSaved();
  _stages.push_back(ended.name);
}

void Story::accountLeft(const Value& record, const std::string& why) {
  const DictionaryRef dictionary = record.dictionary();
  const auto known = dictionary ? _rows.find(dictionary.get()) : _rows.end();
  if (known != _rows.end()) {
    _accounts[known->second].why = why;
  } else {
    addTold(record, why).left = stage();
  }
}

void Story::descriptionNotConverted(const Value& description, const std::string& why) {
  addTold(description, why).isConverted = false;
}

Story::Account& Story::addTold(const Value& record, const std::string& why) {
  Account& account = _accounts.emplace_back();
  if (const DictionaryRef dictionary = record.dictionary()) {
    account.snapshot = dictionary->frozenCopy();
  }
  account.born = stage();
  account.why = why;
  return account;
}

void Story::recordReplaced(const DictionaryRef& before, const DictionaryRef& now) {
  const auto known = _rows.find(before.get());
  if (known == _rows.end()) return;
  const Row row = known->second;
  _rows.erase(known);
  _rows[now.get()] = row;
  _accounts[row].record = now;
}

Story::Row Story::rowOf(const DictionaryRef& record) {
  const auto [known, isNew] = _rows.try_emplace(record.get(), _accounts.size());
  if (isNew) _accounts.emplace_back().record = record;
  return known->second;
}

void Story::visit(Row row, std::optional<Row> parent) {
  const DictionaryRef record = _accounts[row].record;
  if (!_accounts[row].snapshot) {
    Account& account = _accounts[row];
    account.snapshot = record->frozenCopy();
    account.born = account.changed = stage();
    account.parent = parent;
    visitChildren(row);
  } else if (!record->sharesStorageWith(*_accounts[row].snapshot)) {
    const DictionaryRef before = std::exchange(_accounts[row].snapshot, record->frozenCopy());
    note(_accounts[row], before);
    visitChildren(row);
  }
  Account& account = _accounts[row];
  if (account.parent != parent) {
    note(account, account.snapshot,
         parent ? "put into " + nameOf(*parent) : "taken out of its parent");
    account.parent = parent;
  }
  account.seen = stage();
  account.left.reset();
  account.why.clear();
}

void Story::visitChildren(Row row) {
  _accounts[row].walked = stage();
  const DictionaryRef record = _accounts[row].record;
  const ArrayRef children = (*record)[kAccountChildAccounts].array();
  if (!children) return;
  for (const Value& element : *children) {
    if (const DictionaryRef child = element.dictionary()) visit(rowOf(child), row);
  }
}

// What a record was made of is known until it is first saved.
void Story::lookAtGiven(Row row, const BasicAccount& account, bool isSaved) {
  Account& met = _accounts[row];
  const DictionaryRef given = isSaved ? nullptr : account.originalProperties();
  if (given && _stages.empty()) {
    note(met, given);
  } else {
    met.isIdentifierNew = isMade((*met.snapshot)[kAccountIdentifier], given);
  }
}

void Story::note(Account& account, const DictionaryRef& before, std::string moved) {
  const DictionaryRef& now = account.snapshot;
  if (moved.empty() && (before == now || equalContent(before, now))) return;
  account.changed = stage();
  account.notes.push_back({stage(), before, now, std::move(moved)});
  const Value& identifier = (*now)[kAccountIdentifier];
  if (identifier != (*before)[kAccountIdentifier]) {
    account.isIdentifierNew = isMade(identifier, before);
  }
}

void Story::settleMissing() {
  const auto settle = [&](Account& account, bool isMissing, const Account* parent) {
    if (!account.isConverted || account.left || !isMissing) return;
    account.left = stage();
    if (account.why.empty() && parent && parent->left == stage() && !parent->why.empty()) {
      account.why = "with its parent";
    }
  };
  for (Account& account : _accounts) {
    if (!account.parent) settle(account, account.seen != stage(), nullptr);
  }
  for (Account& account : _accounts) {
    if (!account.parent) continue;
    const Account& parent = _accounts[*account.parent];
    const bool isWalked = parent.walked == stage();
    settle(account, parent.left.has_value() || (isWalked && account.seen != stage()), &parent);
  }
}

std::string Story::whyNotSaved() const {
  const std::string failed = "the accounts file could not be replaced in the end: " + _saveFailure;
  if (!_lastSaved) return failed + "; it is as it was";
  return failed + "; it reads as current, although nothing of what came after " +
         _stages[*_lastSaved] + " is in it";
}

Place Story::placeOf(const Account& account) const {
  if (!account.isConverted) return Place::InLegacyFile;
  const std::size_t saved = _lastSaved.value_or(0);
  const bool wasInFile = account.born <= saved;
  if (wasInFile && !_lastSaved && account.born > 0) return Place::NotSaved;
  // What went after the last save is in the file still.
  if (account.left && (!wasInFile || (_lastSaved && *account.left <= saved))) {
    return account.why.empty() ? Place::Unexplained : Place::Gone;
  }
  if (!wasInFile) return Place::NotSaved;
  const bool isCurrent = _lastSaved && !account.left && account.changed <= saved;
  return isCurrent ? Place::InFile : Place::InFileAsBefore;
}

std::string Story::nameOf(const Account& account, const DictionaryRef& record) const {
  for (const String& key :
       {kAccountDisplayName, kAccountUsername, kAccountTypeString, kAccountType}) {
    const String name = record ? (*record)[key].string() : nullptr;
    if (!name.empty()) return name.str();
  }
  if (account.parent) return nameOf(*account.parent);
  return record ? "(no name)" : "(no account)";
}

AccountStory Story::told(Row row, const Picture& picture) const {
  const Account& account = _accounts[row];
  AccountStory story;
  story.place = placeOf(account);
  DictionaryRef record = account.snapshot;
  for (const auto& [stage, before, now, moved] : account.notes) {
    const std::string name(stage == 0 ? kLoading : std::string_view(_stages[stage]));
    if (story.steps.empty() || story.steps.back().stage != name) story.steps.push_back({name, {}});
    std::vector<std::string>& what = story.steps.back().what;
    std::ranges::move(wordsForChanges(*before, *now), std::back_inserter(what));
    if (!moved.empty()) what.push_back(moved);
    if (what.empty()) story.steps.pop_back();
  }
  story.why = account.why;
  if (story.isIn(Place::InFile)) {
    const auto unloadable = _unloadable.find(row);
    if (unloadable != _unloadable.end()) {
      story.place = Place::Unloadable;
      story.why = unloadable->second;
    }
    if (const DictionaryRef& written = picture.written[row]) {
      std::vector<std::string> words = wordsForMerge(*record, *written);
      if (!words.empty()) story.steps.push_back({std::string(kSaving), std::move(words)});
      record = written;
    }
  }
  story.name = nameOf(account, record);
  story.from = account.born < _stages.size() ? _stages[account.born] : "";
  if (record) {
    story.type = (*record)[kAccountType].string().str();
    if (story.type.empty()) story.type = (*record)[kAccountClass].string().str();
    story.identifier = (*record)[kAccountIdentifier].string().str();
    story.isIdentifierNew = account.isIdentifierNew;
  }
  for (const Row child : picture.children[row]) story.children.push_back(told(child, picture));
  return story;
}

std::vector<AccountStory> Story::accounts() const {
  Picture picture{std::vector<std::vector<Row>>(_accounts.size()),
                  std::vector<DictionaryRef>(_accounts.size())};
  for (std::size_t index = 0; index < _written.size(); ++index) {
    picture.written[_writtenOrder[index]] = _written[index].dictionary();
  }
  std::vector<Row> apart;
  std::vector<Row> others;
  std::vector<bool> isStored(_accounts.size());
  for (const Row row : _order) isStored[row] = true;
  for (Row row = 0; row < _accounts.size(); ++row) {
    const Account& account = _accounts[row];
    if (placeOf(account) == Place::Unexplained) {
      apart.push_back(row);
    } else if (account.parent && placeOf(_accounts[*account.parent]) != Place::Unexplained) {
      picture.children[*account.parent].push_back(row);
    } else if (!isStored[row]) {
      others.push_back(row);
    }
  }
  std::vector<AccountStory> stories;
  std::vector<bool> isTold(_accounts.size());
  for (const std::vector<Row>* list : {&std::as_const(apart), &_order, &std::as_const(others)}) {
    for (const Row row : *list) {
      if (isTold[row]) continue;
      isTold[row] = true;
      stories.push_back(told(row, picture));
    }
  }
  return stories;
}

}  // namespace tallbook::migrate
