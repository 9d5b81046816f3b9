// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <CLI/CLI.hpp>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <new>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tallbook/AccountsWatcher.h"
#include "tallbook/Host.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

// One process saves as fast as it can, another watches and keeps a picture of the accounts by the
// answers alone. At the end the picture must be what the file says, whatever was done to the
// watcher and to the folder meanwhile.

namespace tallbook::bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLast = "LAST";
/// What the watching process changes itself, and nobody else.
constexpr const char* kOwnKey = "Own";
constexpr std::string_view kOwnAccounts = "OWN";
constexpr int kMostMillisecondsOfSilence = 30'000;

/// What the processes have in common: it lies in memory that they share.
struct Progress {
  std::atomic<unsigned> saves;
  std::atomic<bool> mayEnd;
};

DictionaryRef record(const std::string& identifier, const String& type = kMailAccountType) {
  return Dictionary::make(
      {{kAccountType, type}, {kAccountClass, "IMAPAccount"}, {kAccountIdentifier, identifier}});
}

std::shared_ptr<BasicAccount> account(const std::string& identifier) {
  return BasicAccount::initWithProperties(record(identifier));
}

// Adds, changes and removes, over and over the same few dozen of accounts and their children.
void changeSomething(AccountsManager& store, unsigned number) {
  const std::string identifier = "A" + std::to_string(number * 7 % 30);
  const std::string childID = identifier + "C" + std::to_string(number % 3);
  const auto present = store.accountWithIdentifier(identifier);
  if (!present) {
    store.insertAccount(account(identifier));
  } else if (number % 11 == 0) {
    store.deleteAccount(present);
  } else if (number % 5 == 0) {
    present->setAccountPropertyForKey(number, "Port");
  } else if (number % 5 == 1) {
    const bool isOn = present->isEnabledForDataclass(kAccountDataclassNotes);
    present->setEnabledForDataclass(!isOn, kAccountDataclassNotes);
  } else if (number % 5 == 2) {
    present->removeAccountPropertyForKey("Port");
    present->setDisplayName("Name " + std::to_string(number));
  } else if (!store.accountWithIdentifier(childID)) {
    store.addChildToAccount(account(childID), present);
  } else {
    store.removeChildWithIdentifierFromAccount(childID, present);
  }
}

/// Saves the change, however often the folder is taken away meanwhile.
void save(const std::function<void(AccountsManager&)>& change) {
  for (;;) {
    const auto store = AccountsManager::init();
    change(*store);
    if (store->saveChanges().isSaved) return;
  }
}

void runSaver(Progress& progress, unsigned saves) {
  for (unsigned number = 0; number < saves; ++number) {
    save([&](AccountsManager& store) { changeSomething(store, number); });
    ++progress.saves;
  }
  while (!progress.mayEnd) ::usleep(100);
  save([](AccountsManager& store) { store.insertAccount(account(kLast)); });
}

/// What the watching process saves itself, and does not want to hear of.
void saveOwn(AccountsWatcher& watcher, unsigned number) {
  save([&](AccountsManager& store) {
    watcher.leaveOutChangesOf(store);
    const std::string name(kOwnAccounts);
    store.insertAccount(account(name + std::to_string(number)));
    store.deleteAccountWithIdentifier(name + std::to_string(number - 1));
    const auto present = store.accountWithIdentifier("A" + std::to_string(number % 30));
    if (present) present->setAccountPropertyForKey(number, kOwnKey);
  });
}

/// Records by identifier, children by their parent's and their own.
class Picture {
 public:
  void apply(const ChangedAccount& change) {
    const std::string name = nameOf(change.parent, change.identifier);
    if (name.starts_with(kOwnAccounts)) throw std::runtime_error("told of " + name);
    if (change.kind == ChangedAccount::Kind::Removed) {
      if (_records.erase(name) != 1) throw std::runtime_error(name + " was removed twice");
      return;
    }
    DictionaryRef& record = _records[name];
    if (!record != (change.kind == ChangedAccount::Kind::Added)) {
      throw std::runtime_error(name + " was not told before, or was told before");
    }
    if (!record) record = Dictionary::make();
    for (const auto& [key, before, now] : change.keys) {
      // Children have records of their own, and the own key may be set by nobody who is told of.
      if (key == kAccountChildAccounts || key == kOwnKey) continue;
      const Value* const known = record->find(key);
      if (known ? before != *known : before.has_value()) {
        throw std::runtime_error("another value before of " + name + " " + key.str());
      }
      if (now) {
        record->set(key, *now);
      } else {
        record->remove(key);
      }
    }
  }

  static Picture ofFile() {
    Picture picture;
    picture.add(nullptr, AccountsManager::readAccountsFile().records());
    return picture;
  }
  bool hasLast() const { return _records.contains(kLast); }
  std::size_t size() const { return _records.size(); }
  friend bool operator==(const Picture& a, const Picture& b) {
    return std::ranges::equal(a._records, b._records, [](const auto& one, const auto& other) {
      return one.first == other.first && equalContent(one.second, other.second);
    });
  }

 private:
  static std::string nameOf(const DictionaryRef& parent, const String& identifier) {
    const String above = parent[kAccountIdentifier].string();
    return (above ? above.str() + ">" : "") + identifier.str();
  }
  void add(const DictionaryRef& parent, const ArrayRef& records) {
    for (const Value& element : records) {
      const DictionaryRef present = element.dictionary()->mutableCopy();
      if (!parent) add(present, present[kAccountChildAccounts].array());
      present->remove(kAccountChildAccounts);
      present->remove(kOwnKey);
      const std::string name = nameOf(parent, present[kAccountIdentifier].string());
      if (!name.starts_with(kOwnAccounts)) _records[name] = present;
    }
  }

  std::map<std::string, DictionaryRef> _records;
};

enum class Wait { Poll, LevelTriggered, EdgeTriggered };

/// Waits for a watcher in one of the ways that there are.
class Waiting {
 public:
  Waiting(Wait way, int descriptor) : _way(way), _descriptor(descriptor) {
    if (way == Wait::Poll) return;
    _epoll = ::epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLIN | (way == Wait::EdgeTriggered ? EPOLLET : 0U);
    ::epoll_ctl(_epoll, EPOLL_CTL_ADD, descriptor, &event);
  }
  ~Waiting() {
    if (_epoll >= 0) ::close(_epoll);
  }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  /// Whether something came; also where a signal did, such as the one to go on.
  bool isOver() const {
    pollfd waiting{_descriptor, POLLIN, 0};
    epoll_event event{};
    const int came = _way == Wait::Poll
                         ? ::poll(&waiting, 1, kMostMillisecondsOfSilence)
                         : ::epoll_wait(_epoll, &event, 1, kMostMillisecondsOfSilence);
    return came == 1 || (came < 0 && errno == EINTR);
  }

 private:
  Wait _way;
  int _descriptor;
  int _epoll = -1;
};

struct Scenario {
  const char* name;
  Wait way = Wait::Poll;
  unsigned answersBetweenRestarts = 0;
  bool savesItself = false;
  /// What happens to the watching process and to the folder, again and again.
  std::function<void(pid_t watching)> disturb = {};
};

/// The watcher as another process would have it that starts now and was given the baseline.
std::unique_ptr<AccountsWatcher> restarted(std::unique_ptr<AccountsWatcher> watcher) {
  const std::string stored = binaryPropertyList(watcher->baseline()).value();
  watcher.reset();
  return AccountsWatcher::since(propertyListFromBytes(stored).value());
}

bool runWatcher(const Scenario& scenario, int ready) {
  auto watcher = AccountsWatcher::fromNow();
  Picture picture = Picture::ofFile();
  auto waiting = std::make_unique<Waiting>(scenario.way, watcher->descriptor());
  ::close(ready);
  unsigned wakes = 0;
  unsigned answers = 0;
  std::size_t changes = 0;
  while (!picture.hasLast()) {
    const AccountsWatcher::Answer answer = watcher->changes();
    for (const ChangedAccount& change : answer.accounts) picture.apply(change);
    changes += answer.accounts.size();
    if (answer) ++answers;
    if (picture.hasLast()) break;
    if (answer && scenario.savesItself) saveOwn(*watcher, answers);
    if (answer && scenario.answersBetweenRestarts &&
        answers % scenario.answersBetweenRestarts == 0) {
      watcher = restarted(std::move(watcher));
      waiting = std::make_unique<Waiting>(scenario.way, watcher->descriptor());
      continue;
    }
    if (!waiting->isOver()) throw std::runtime_error("no notice came");
    ++wakes;
  }
  const bool isEqual = picture == Picture::ofFile();
  std::cout << scenario.name << ": " << picture.size() << " records at the end, "
            << (isEqual ? "as in the file" : "OTHER THAN IN THE FILE") << "; " << wakes
            << " wakes, " << answers << " answers, " << changes << " changes" << std::endl;
  return isEqual;
}

pid_t fork(const std::function<bool()>& work) {
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child > 0) return child;
  try {
    ::_exit(work() ? 0 : 1);
  } catch (const std::exception& error) {
    std::cerr << "ended early: " << error.what() << std::endl;
    ::_exit(1);
  }
}

bool hasEndedWell(pid_t child) {
  int status = 0;
  return ::waitpid(child, &status, 0) == child && status == 0;
}

std::string folder() {
  return fs::path(AccountsManager::fullPathToTallbookPlist()).parent_path();
}

bool run(const Scenario& scenario, Progress& progress, unsigned saves) {
  progress.saves = 0;
  progress.mayEnd = false;
  fs::remove(AccountsManager::fullPathToTallbookPlist());
  int ready[2];
  if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
  const pid_t watching = fork([&] { return runWatcher(scenario, ready[1]); });
  ::close(ready[1]);
  char nothing;
  static_cast<void>(!::read(ready[0], &nothing, 1));
  ::close(ready[0]);
  const pid_t saving = fork([&] {
    runSaver(progress, saves);
    return true;
  });
  while (progress.saves < saves && ::waitpid(saving, nullptr, WNOHANG) == 0) {
    if (scenario.disturb) scenario.disturb(watching);
    ::usleep(1000);
  }
  progress.mayEnd = true;
  const bool isSaved = hasEndedWell(saving);
  return hasEndedWell(watching) && isSaved;
}

void stopForAWhile(pid_t watching) {
  ::kill(watching, SIGSTOP);
  ::usleep(20'000);
  ::kill(watching, SIGCONT);
}

/// More notices than the kernel keeps, of names that are nobody's.
void overflow(pid_t watching) {
  unsigned most = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
  ::kill(watching, SIGSTOP);
  const std::string names[] = {folder() + "/one", folder() + "/other"};
  std::ofstream(names[0]).flush();
  for (unsigned at = 0; at <= most; ++at) fs::rename(names[at % 2], names[(at + 1) % 2]);
  ::usleep(5'000);
  ::kill(watching, SIGCONT);
  ::usleep(20'000);
}

void takeFolderAway(pid_t) {
  std::error_code raced;
  fs::remove_all(folder(), raced);
  fs::create_directories(folder(), raced);
  ::usleep(20'000);
}

double processorMilliseconds() {
  timespec used{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
}

bool isIdleForNothing() {
  const auto watcher = AccountsWatcher::fromNow();
  pollfd waiting{watcher->descriptor(), POLLIN, 0};
  const double before = processorMilliseconds();
  const bool isWoken = ::poll(&waiting, 1, 2000) != 0;
  const double used = processorMilliseconds() - before;
  std::cout << "idle for two seconds: " << used << " ms of the processor" << std::endl;
  return !isWoken && used < 1;
}

int answer(int argc, char** argv) {
  CLI::App app("Watches while another process saves, on a device tree of its own.");
  HostOptions host;
  unsigned saves = 1000;
  host.log = HostOptions::Log::Nowhere;
  app.add_option("--root", host.root, "Root of the device tree; its accounts are removed")
      ->required()
      ->check(CLI::ExistingDirectory);
  app.add_option("--saves", saves)->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  configureHost(host);
  void* const shared =
      ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) throw std::runtime_error("no memory for the processes to share");
  Progress& progress = *new (shared) Progress{};
  bool isWell = true;
  for (const Scenario& scenario :
       {Scenario{"watched with poll"},
        Scenario{"with epoll, level-triggered", Wait::LevelTriggered},
        Scenario{"with epoll, edge-triggered", Wait::EdgeTriggered},
        Scenario{"stopped again and again", Wait::EdgeTriggered, 0, false, stopForAWhile},
        Scenario{"notices lost", Wait::EdgeTriggered, 0, false, overflow},
        Scenario{"folder removed and made again", Wait::EdgeTriggered, 0, false, takeFolderAway},
        Scenario{"restarted after every seventh answer", Wait::Poll, 7},
        Scenario{"saving itself, which is left out", Wait::Poll, 0, true},
        Scenario{"restarted, folder removed", Wait::EdgeTriggered, 7, false, takeFolderAway}}) {
    isWell &= run(scenario, progress, saves);
  }
  isWell &= isIdleForNothing();
  return isWell ? 0 : 1;
}

}  // namespace
}  // namespace tallbook::bench

int main(int argc, char** argv) {
  try {
    return tallbook::bench::answer(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "tallbook-stress-watcher: " << error.what() << '\n';
    return 1;
  }
}
