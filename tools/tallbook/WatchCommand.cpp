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
#include "tools/tallbook/LocalTimeText.h"
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

std::string_view nameOf(AccountsFileState::Kind kind) {
  switch (kind) {
    case AccountsFileState::Kind::Missing:
      return "missing";
    case AccountsFileState::Kind::Whole:
      return "readable";
    case AccountsFileState::Kind::Malformed:
      return "malformed";
    case AccountsFileState::Kind::Unreadable:
      break;
  }
  return "unreadable";
}

std::string textOf(const AccountsFileState& state) {
  switch (state.kind) {
    case AccountsFileState::Kind::Malformed:
      return "the accounts file is none: " + state.reason;
    case AccountsFileState::Kind::Unreadable:
      return "the accounts file cannot be read: " + state.reason;
    default:
      return "the accounts file can be read again";
  }
}

JSON jsonFrom(const AccountsFileState& state) {
  JSON object{{"file", nameOf(state.kind)}};
  if (!state.reason.empty()) object["reason"] = state.reason;
  return object;
}

class Watch {
 public:
  Watch(const Options& options, const WatchOptions& watching)
      : _options(options), _watching(watching), _output(!watching.bus), _watcher(makeWatcher()) {}

  ExitCode run() {
    // Nothing but a baseline may have to make room for one.
    if (!_watching.keep.empty()) static_cast<void>(watcherSince(_watching.keep));
    keep();
    noteWhatIsNotWatched();
    do {
      const AccountsWatcher::Answer answer = _watcher->changes();
      if (!answer) continue;
      if (_watching.bus) {
        announce(answer);
      } else if (!print(answer)) {
        break;
      }
      keep();
      if (_watching.once && isAnyTold(answer)) break;
    } while (_output.waitFor(_watcher->descriptor(), patience()));
    return ExitCode::Done;
  }

 private:
  std::unique_ptr<AccountsWatcher> makeWatcher() const {
    if (!_watching.since.empty()) {
      if (auto watcher = watcherSince(_watching.since)) return watcher;
      note("there is no " + _watching.since + " yet; beginning with the accounts as they are now");
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
    if (!_watching.keep.empty()) keepBaseline(*_watcher, _watching.keep);
  }

  bool isTold(const ChangedAccount& change) const {
    const auto& types = _watching.types;
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
      const Style style = change.kind == ChangedAccount::Kind::Added     ? Style::Added
                          : change.kind == ChangedAccount::Kind::Removed ? Style::Removed
                                                                         : Style::Changed;
      return !isTold(change) || print(now, change, style);
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
  const WatchOptions& _watching;
  LiveOutput _output;
  std::unique_ptr<AccountsWatcher> _watcher;
};

}  // namespace

ExitCode watch(const Options& options, const WatchOptions& watching) {
  for (const std::string& type : watching.types) requireAccountType(type);
  return Watch(options, watching).run();
}

}  // namespace tallbook::tool
