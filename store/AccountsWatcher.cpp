// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsWatcher.h"

#include <string>
#include <utility>

#include "tallbook/Vocabulary.h"

#include "platform/Platform.h"
#include "store/AccountsFile.h"
#include "store/AccountsManagerState.h"
#include "store/RecordDifferences.h"
#include "store/WatchedAccounts.h"

namespace tallbook {
namespace {

bool isUsable(const AccountsFileState& state) {
  return state.kind == AccountsFileState::Kind::Whole ||
         state.kind == AccountsFileState::Kind::Missing;
}

std::string nameOf(ChangedAccount::Kind kind) {
  switch (kind) {
    case ChangedAccount::Kind::Added:
      return "added";
    case ChangedAccount::Kind::Removed:
      return "removed";
    case ChangedAccount::Kind::Changed:
      break;
  }
  return "changed";
}

/// The dataclasses that came or went.
std::vector<std::string> dataclassesSwitchedIn(const ChangedAccount& account) {
  std::vector<std::string> names;
  const auto addMissing = [&](const ArrayRef& from, const ArrayRef& without) {
    for (const Value& dataclass : from) {
      if (!without || !without->contains(dataclass)) names.push_back(dataclass.string().str());
    }
  };
  addMissing(account.dataclassesBefore, account.dataclassesNow);
  addMissing(account.dataclassesNow, account.dataclassesBefore);
  return names;
}

MessageBus::Arguments announcementOf(const ChangedAccount& account) {
  std::vector<std::string> keys;
  keys.reserve(account.keys.size());
  for (const ChangedKey& key : account.keys) keys.push_back(key.key.str());
  return {nameOf(account.kind),           account.type.str(),
          account.identifier.str(),       account.parent[kAccountIdentifier].string().str(),
          dataclassesSwitchedIn(account), std::move(keys)};
}

}  // namespace

struct AccountsWatcher::State {
  State() { watch = Platform::current().fileWatching().watch(AccountsFile::path(), watchError); }

  std::unique_ptr<FileWatch> watch;
  std::error_code watchError;
  std::shared_ptr<WatchedAccounts> accounts;
  bool wasUsable = true;
  bool hasToLook = true;  ///< whatever the watch says
};

AccountsWatcher::AccountsWatcher(std::unique_ptr<State> state) : _state(std::move(state)) {}

AccountsWatcher::~AccountsWatcher() = default;

std::unique_ptr<AccountsWatcher> AccountsWatcher::fromNow() {
  // Watched before it is read, so that nothing happens in between.
  auto state = std::make_unique<State>();
  const AccountsFile file = AccountsFile::read();
  state->accounts = std::make_shared<WatchedAccounts>(dictionariesIn(file.records()));
  // One that cannot be read is for the first answer to tell.
  state->hasToLook = !isUsable(file.state());
  return std::unique_ptr<AccountsWatcher>(new AccountsWatcher(std::move(state)));
}

std::unique_ptr<AccountsWatcher> AccountsWatcher::fromStore(const AccountsManager& store) {
  auto state = std::make_unique<State>();
  state->accounts = std::make_shared<WatchedAccounts>(store._state->savedRecords);
  return std::unique_ptr<AccountsWatcher>(new AccountsWatcher(std::move(state)));
}

std::unique_ptr<AccountsWatcher> AccountsWatcher::since(const Value& baseline) {
  auto records = WatchedAccounts::recordsOf(baseline);
  if (!records) return nullptr;
  auto state = std::make_unique<State>();
  state->accounts = std::make_shared<WatchedAccounts>(*std::move(records));
  return std::unique_ptr<AccountsWatcher>(new AccountsWatcher(std::move(state)));
}

int AccountsWatcher::descriptor() const noexcept {
  return _state->watch ? _state->watch->descriptor() : -1;
}

std::error_code AccountsWatcher::descriptorProblem() const noexcept {
  return _state->watch ? _state->watch->problem() : _state->watchError;
}

AccountsWatcher::Answer AccountsWatcher::changes() {
  const bool mayHaveChanged = !_state->watch || _state->watch->takeNotices();
  Answer answer;
  if (!mayHaveChanged && !_state->hasToLook) return answer;
  // Until all of it is told, which may throw.
  _state->hasToLook = true;
  const AccountsFile file = AccountsFile::read();
  if (isUsable(file.state())) {
    answer.accounts = _state->accounts->changesTo(dictionariesIn(file.records()));
  }
  if (isUsable(file.state()) != _state->wasUsable) answer.newState = file.state();
  _state->wasUsable = isUsable(file.state());
  _state->hasToLook = false;
  return answer;
}

DictionaryRef AccountsWatcher::baseline() const {
  return _state->accounts->baseline();
}

void AccountsWatcher::leaveOutChangesOf(AccountsManager& store) {
  store._state->leftOutOf.push_back(_state->accounts);
}

bool AccountsWatcher::announceOnBus(const std::vector<ChangedAccount>& accounts) {
  if (accounts.empty()) return true;
  std::vector<MessageBus::Arguments> announcements;
  announcements.reserve(accounts.size());
  for (const ChangedAccount& account : accounts) announcements.push_back(announcementOf(account));
  return Platform::current().messageBus().emit(
      {"/com/orvane/Tallbook1", "com.orvane.Tallbook1", "AccountsChanged"}, announcements);
}

}  // namespace tallbook
