// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <chrono>
#include <cmath>

#include "tallbook/AccountsWatcher.h"
#include "tallbook/ScalarText.h"

#include "tools/common/AccountsFile.h"
#include "tools/tallbook/BaselineFile.h"
#include "tools/tallbook/ChangeText.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/LiveOutput.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {
namespace {

using std::chrono::system_clock;
using tool::jsonFrom;
using tool::textOf;

constexpr int kWithoutLimit = -1;
/// Between two looks at a file that the system does not watch.
constexpr int kMillisecondsBetweenLooks = 2000;

/// Seconds since 2001, as ISO 8601 in UTC.
std::string isoTextOf(system_clock::time_point instant) {
  constexpr std::chrono::sys_days kEpoch = std::chrono::year(2001) / 1 / 1;
  const std::chrono::duration<double> since = instant - kEpoch;
  return iso8601({std::floor(since.count())});
}

std::string textOf(const AccountsFileState& state) {
  using Kind = AccountsFileState::Kind;
  if (state.kind == Kind::Malformed) return "the accounts file is none: " + state.reason;
  if (state.kind == Kind::Unreadable) return "the accounts file cannot be read: " + state.reason;
  return "the accounts file can be read again";
}

JSON jsonFrom(const AccountsFileState& state) {
  constexpr const char* kNames[] = {"missing", "readable", "malformed", "unreadable"};
  JSON object{{"file", kNames[static_cast<std::size_t>(state.kind)]}};
  if (!state.reason.empty()) object["reason"] = state.reason;
  return object;
}

class Watch {
 public:
  explicit Watch(const Options& options)
      : _options(options), _output(!options.bus), _watcher(makeWatcher()) {}

  ExitCode run() {
    // Nothing but a baseline may have to make room for one.
    if (!_options.keep.empty()) static_cast<void>(watcherSince(_options.keep));
    keep();
    noteWhatIsNotWatched();
    do {
      const AccountsWatcher::Answer answer = _watcher->changes();
      if (!answer) continue;
      if (_options.bus) {
        announce(answer);
      } else if (!print(answer)) {
        break;
      }
      keep();
      if (_options.once && isAnyTold(answer)) break;
    } while (_output.waitFor(_watcher->descriptor(), patience()));
    return ExitCode::Done;
  }

 private:
  std::unique_ptr<AccountsWatcher> makeWatcher() const {
    if (!_options.since.empty()) {
      if (auto watcher = watcherSince(_options.since)) return watcher;
      note("there is no " + _options.since + " yet; beginning with the accounts as they are now");
    }
    return AccountsWatcher::fromNow();
  }

  void noteWhatIsNotWatched() const {
    const std::error_code problem = _watcher->descriptorProblem();
    if (problem) {
      note("the system does not tell of every change: " + problem.message() +
           "; looking every two seconds");
    }
  }
  int patience() const {
    return _watcher->descriptorProblem() ? kMillisecondsBetweenLooks : kWithoutLimit;
  }

  void keep() const {
    if (!_options.keep.empty()) keepBaseline(*_watcher, _options.keep);
  }

  bool isTold(const ChangedAccount& change) const {
    const auto& types = _options.types;
    return types.empty() || std::ranges::find(types, change.type.str()) != types.end();
  }
  bool isAnyTold(const AccountsWatcher::Answer& answer) const {
    return std::ranges::any_of(answer.accounts, [&](const auto& change) { return isTold(change); });
  }

  void announce(const AccountsWatcher::Answer& answer) const {
    std::vector<ChangedAccount> told;
    std::ranges::copy_if(answer.accounts, std::back_inserter(told),
                         [&](const auto& change) { return isTold(change); });
    if (told.empty() || AccountsWatcher::announceOnBus(told)) return;
    // Ends before the baseline is kept, so that whoever starts it again tells the change.
    throw Failure(ExitCode::NotSaved,
                  "the message bus took no notice of a change; started again, it is told of what "
                  "has changed since the baseline that was kept");
  }

  /// False when the command is to end.
  bool print(const AccountsWatcher::Answer& answer) {
    AccountsFile told;
    told.topLevel = _watcher->baseline();
    told.path = AccountsManager::fullPathToTallbookPlist();
    requirePrintable(told);
    const auto now = system_clock::now();
    if (answer.newState && !print(now, *answer.newState, Style::Plain)) return false;
    return std::ranges::all_of(answer.accounts, [&](const ChangedAccount& change) {
      return !isTold(change) || print(now, change, styleOf(change));
    });
  }

  template <class What>
  bool print(system_clock::time_point now, const What& what, Style style) {
    if (!_options.json) {
      return _output.print(localTimeText(now) + "  " + styled(style, printable(textOf(what))));
    }
    JSON line{{"time", isoTextOf(now)}};
    line.update(jsonFrom(what));
    return _output.print(line.dump());
  }

  const Options& _options;
  LiveOutput _output;
  std::unique_ptr<AccountsWatcher> _watcher;
};

}  // namespace

ExitCode watch(const Options& options) {
  for (const std::string& type : options.types) requireAccountType(type);
  return Watch(options).run();
}

}  // namespace tallbook::tool
