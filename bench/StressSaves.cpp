// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tallbook/AccountsManager.h"
#include "tallbook/Host.h"
#include "tallbook/Vocabulary.h"

#include "bench/Stopwatch.h"

// Many processes load, change one thing and save, as fast as they can, and nothing may be missing
// at the end.

namespace tallbook::bench {
namespace {

// More would be no progress: with so few processes, one of them is left behind.
constexpr unsigned kMostAttempts = 50;
constexpr const char* kShared = "SHARED";
const std::string kDataclassPrefix = "com.orvane.Dataclass.";

using Names = std::set<std::string>;

/// What one process changes in one round, under a name that no other round of any process has.
struct Round {
  unsigned process, number;

  std::string name() const { return nameOf(number); }
  std::string nameBefore() const { return nameOf(number - 1); }

 private:
  std::string nameOf(unsigned round) const {
    return "Stress " + std::to_string(process) + "-" + std::to_string(round);
  }
};

struct Scenario {
  const char* name;
  bool isByWholeSave;  ///< by saveAllAccounts
  std::function<void(AccountsManager&, const Round&)> change;
  std::function<Names(const AccountsManager&)> namesFound;
  /// Whether the end has what the round made; all do where nothing stands here.
  std::function<bool(const Round&)> isLasting;
};

DictionaryRef properties(const String& type, const std::string& identifier) {
  return Dictionary::make(
      {{kAccountType, type}, {kAccountClass, "IMAPAccount"}, {kAccountIdentifier, identifier}});
}

std::shared_ptr<BasicAccount> sharedAccount(const AccountsManager& store) {
  auto account = store.accountWithIdentifier(kShared);
  if (!account) throw std::runtime_error("the account that all processes change is gone");
  return account;
}

void changeKey(AccountsManager& store, const Round& round) {
  sharedAccount(store)->setAccountPropertyForKey("changed", round.name());
}

Names keysFound(const AccountsManager& store) {
  Names names;
  const DictionaryRef record = sharedAccount(store)->properties();
  for (const auto& [key, value] : *record) {
    if (key.view().starts_with("Stress")) names.insert(key.str());
  }
  return names;
}

void switchDataclass(AccountsManager& store, const Round& round) {
  sharedAccount(store)->_forcedSetEnabledForDataclass(true, kDataclassPrefix + round.name());
}

Names dataclassesFound(const AccountsManager& store) {
  Names names;
  const ArrayRef enabled =
      (*sharedAccount(store)->properties())[kAccountEnabledDataclasses].array();
  if (!enabled) return names;
  for (const Value& dataclass : *enabled) {
    names.insert(dataclass.string().str().substr(kDataclassPrefix.size()));
  }
  return names;
}

void addChild(AccountsManager& store, const Round& round) {
  store.addChildToAccount(
      BasicAccount::initWithProperties(properties(kCalDAVAccountType, round.name())),
      sharedAccount(store));
}

Names childrenFound(const AccountsManager& store) {
  Names names;
  for (const auto& account : store.allBasicSyncableAccounts()) {
    if (account->parentAccount()) names.insert(account->identifier().str());
  }
  return names;
}

// Of four rounds the last one deletes what the third one added.
void addOrDeleteAccount(AccountsManager& store, const Round& round) {
  if (round.number % 4 == 3) {
    store.deleteAccountWithIdentifier(round.nameBefore());
  } else {
    store.insertAccount(
        BasicAccount::initWithProperties(properties(kMailAccountType, round.name())));
  }
}

Names accountsFound(const AccountsManager& store) {
  Names names;
  for (const auto& account : *store.allBasicAccounts()) {
    if (account->identifier() != kShared) names.insert(account->identifier().str());
  }
  return names;
}

std::vector<Scenario> scenarios() {
  return {{"keys of one account", false, changeKey, keysFound, {}},
          {"dataclasses of one account", false, switchDataclass, dataclassesFound, {}},
          {"children of one parent", false, addChild, childrenFound, {}},
          {"accounts added and deleted", false, addOrDeleteAccount, accountsFound,
           [](const Round& round) { return round.number % 4 < 2; }},
          {"keys of one account, saveAllAccounts", true, changeKey, keysFound, {}}};
}

/// What the processes have in common: it lies in memory that they share.
struct Progress {
  unsigned mostAttempts[256];  ///< of each process
};

class Stress {
 public:
  Stress(unsigned processes, unsigned rounds)
      : _processes(processes),
        _rounds(rounds),
        _progress(static_cast<Progress*>(::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                                                MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
    if (_progress == MAP_FAILED) throw std::runtime_error("no memory for the processes to share");
  }
  ~Stress() { ::munmap(_progress, sizeof(Progress)); }
  Stress(const Stress&) = delete;
  Stress& operator=(const Stress&) = delete;

  /// Whether nothing was lost.
  bool run(const Scenario& scenario) {
    begin();
    bool areDone = false;
    const double seconds = nanoseconds([&] { return areDone = runProcesses(scenario); }) / 1e9;
    const Names expected = namesExpected(scenario);
    const Names found = scenario.namesFound(*AccountsManager::init());
    Names missing;
    Names returned;
    std::ranges::set_difference(expected, found, std::inserter(missing, missing.end()));
    std::ranges::set_difference(found, expected, std::inserter(returned, returned.end()));
    const unsigned attempts =
        *std::max_element(_progress->mostAttempts, _progress->mostAttempts + _processes);
    std::cout << scenario.name << ": " << expected.size() - missing.size() << " of "
              << expected.size() << " there, " << returned.size() << " deleted ones came back, ";
    if (!scenario.isByWholeSave) std::cout << "at most " << attempts << " attempts of a save, ";
    std::cout << std::fixed << std::setprecision(1) << seconds << " s" << std::endl;
    return areDone && missing.empty() && returned.empty() && attempts <= kMostAttempts;
  }

 private:
  /// A file with the one account that all processes change.
  void begin() const {
    std::fill_n(_progress->mostAttempts, _processes, 0U);
    std::filesystem::remove(AccountsManager::fullPathToTallbookPlist());
    const auto store = AccountsManager::init();
    store->insertAccount(BasicAccount::initWithProperties(properties(kMailAccountType, kShared)));
    if (!store->saveAllAccounts()) throw std::runtime_error(store->saveFailure().text());
  }

  bool runProcesses(const Scenario& scenario) const {
    int gate[2];
    if (::pipe(gate) != 0) throw std::runtime_error("no pipe");
    std::vector<pid_t> children;
    for (unsigned process = 0; process < _processes; ++process) {
      const pid_t child = ::fork();
      if (child < 0) throw std::runtime_error("no process");
      if (child == 0) {
        // Opens for all at once, when its last writer closes it.
        ::close(gate[1]);
        char nothing;
        static_cast<void>(!::read(gate[0], &nothing, 1));
        ::_exit(runRounds(scenario, process) ? 0 : 1);
      }
      children.push_back(child);
    }
    ::close(gate[0]);
    ::close(gate[1]);
    bool areDone = true;
    for (const pid_t child : children) {
      int status = 0;
      areDone &= ::waitpid(child, &status, 0) == child && status == 0;
    }
    return areDone;
  }

  bool runRounds(const Scenario& scenario, unsigned process) const {
    try {
      for (unsigned number = 0; number < _rounds; ++number) {
        const auto store = AccountsManager::init();
        scenario.change(*store, {process, number});
        save(scenario, *store, process);
      }
      return true;
    } catch (const std::exception& error) {
      std::cerr << "process " << process << " ended early: " << error.what() << '\n';
      return false;
    }
  }

  void save(const Scenario& scenario, AccountsManager& store, unsigned process) const {
    if (scenario.isByWholeSave) {
      if (!store.saveAllAccounts()) throw std::runtime_error(store.saveFailure().text());
      return;
    }
    const SaveReceipt receipt = store.saveChanges();
    if (!receipt.isSaved) throw std::runtime_error(receipt.failure.text());
    if (!receipt.clashes.empty()) {
      throw std::runtime_error("a clash, though no two rounds change the same");
    }
    unsigned& most = _progress->mostAttempts[process];
    most = std::max(most, receipt.attempts);
  }

  Names namesExpected(const Scenario& scenario) const {
    Names names;
    for (unsigned process = 0; process < _processes; ++process) {
      for (unsigned number = 0; number < _rounds; ++number) {
        const Round round{process, number};
        if (!scenario.isLasting || scenario.isLasting(round)) names.insert(round.name());
      }
    }
    return names;
  }

  const unsigned _processes, _rounds;
  Progress* const _progress;
};

int answer(int argc, char** argv) {
  CLI::App app(
      "Saves from many processes at once, on a device tree of its own, and counts what is "
      "missing.");
  HostOptions host;
  unsigned runs = 1;
  unsigned processes = 8;
  unsigned rounds = 200;
  host.log = HostOptions::Log::Nowhere;
  app.add_option("--root", host.root, "Root of the device tree; its accounts are removed")
      ->required()
      ->check(CLI::ExistingDirectory);
  app.add_option("--runs", runs, "How often all of it")->capture_default_str();
  app.add_option("--processes", processes)->check(CLI::Range(1, 256))->capture_default_str();
  app.add_option("--rounds", rounds, "Saves of each process")->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  configureHost(host);
  Stress stress(processes, rounds);
  bool isWell = true;
  for (unsigned run = 0; run < runs; ++run) {
    for (const Scenario& scenario : scenarios()) isWell &= stress.run(scenario);
  }
  return isWell ? 0 : 1;
}

}  // namespace
}  // namespace tallbook::bench

int main(int argc, char** argv) {
  try {
    return tallbook::bench::answer(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "tallbook-stress: " << error.what() << '\n';
    return 1;
  }
}
