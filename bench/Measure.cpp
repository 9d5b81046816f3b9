// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// One measurement in a process of its own, for the ratios: prints its figures as "name value".
//
//   make FILE RECORDS CHILDREN    writes an accounts file
//   decode FILE | encode FILE     nanoseconds of the process's first decode or encode
//   store RECORDS CHILDREN        medians over several rounds, in nanoseconds
//   first RECORDS                 nanoseconds of the process's first load and first save
//   memory RECORDS CHILDREN       growth of the process's peak memory by a load, in bytes
//   watch RECORDS                 medians of a load and of a watcher's answer about one account, in
//                                 nanoseconds; what a store and a watcher hold, in bytes
//   legacy ACCOUNTS | zero ACCOUNTS
//                                 nanoseconds of a migration of legacy files or of an accounts file
//                                 of version 0, and of its loads and saves alone

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <malloc.h>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "tallbook/AccountsManager.h"
#include "tallbook/AccountsWatcher.h"
#include "tallbook/Host.h"
#include "tallbook/PropertyList.h"

#include "bench/BenchDevice.h"
#include "bench/MigrationFiles.h"
#include "bench/PropertyListFiles.h"
#include "bench/QuietConsole.h"
#include "bench/Stopwatch.h"
#include "bench/peers/WholeFile.h"
#include "migration/AccountsDataMigrator.h"
#include "platform/Platform.h"
#include "tools/common/Output.h"
#include "tools/tallbook-migrate/Story.h"

namespace tallbook::tool {

const char* const kProgram = "tallbook-measure";

}  // namespace tallbook::tool

namespace tallbook::bench {
namespace {

using Arguments = std::vector<std::string>;

void print(const char* name, double value) {
  std::printf("%s %.0f\n", name, value);
}

void make(const Arguments& arguments) {
  writeBytes(arguments.at(0),
             accountsFileBytes(std::stoul(arguments.at(1)), std::stoul(arguments.at(2))));
}

/// Writes an accounts file of version 0 into a device tree.
void makeOld(const Arguments& arguments) {
  configureHost({.root = arguments.at(0), .log = HostOptions::Log::Nowhere});
  writeFilesBefore(Before::VersionZero, std::stoul(arguments.at(1)));
}

void decode(const Arguments& arguments) {
  const std::string bytes = readBytes(arguments.at(0));
  print("decode", nanoseconds([&] { return propertyListFromBytes(bytes).value(); }));
}

void encode(const Arguments& arguments) {
  const Value tree = propertyListFromBytes(readBytes(arguments.at(0))).value();
  print("encode", nanoseconds([&] { return binaryPropertyList(tree).value(); }));
}

double writeAndFlush(const std::string& bytes) {
  FileSystem& files = Platform::current().fileSystem();
  const std::string path = AccountsManager::fullPathToTallbookPlist() + ".written";
  const double taken = nanosecondsOnATidyHeap([&] { return files.createFile(path, bytes); });
  if (files.remove(path)) throw std::runtime_error("nothing was written");
  return taken;
}

// What no save can do without, by the system's bare calls.
double replaceBarely(const std::string& bytes) {
  const std::string folder =
      std::filesystem::path(AccountsManager::fullPathToTallbookPlist()).parent_path();
  bool isReplaced = false;
  const double taken = nanosecondsOnATidyHeap(
      [&] { return isReplaced = peers::replaceFile(folder.c_str(), "replaced", bytes); });
  if (!isReplaced) throw std::runtime_error("nothing was replaced");
  return taken;
}

template <class Save>
double saveOneChange(BasicAccount& account, int round, Save save) {
  account.setAccountPropertyForKey(round, "PortNumber");
  bool saved = false;
  const double taken = nanosecondsOnATidyHeap([&] { return saved = save(); });
  if (!saved) throw std::runtime_error("the save failed");
  return taken;
}

// Sixty-four accounts spread over the store, the same number in a store of any size, so that what
// grows is the look-up and not the part of the memory that it visits.
double lookUp(const AccountsManager& store, std::size_t records) {
  constexpr std::size_t kAccounts = 64;
  constexpr std::size_t kRounds = 200;
  std::vector<String> identifiers;
  for (std::size_t at = 0; at < kAccounts; ++at) {
    identifiers.push_back(identifierOf(at * records / kAccounts));
  }
  std::size_t found = 0;
  const double taken = nanosecondsOnATidyHeap([&] {
    for (std::size_t round = 0; round < kRounds; ++round) {
      for (const String& identifier : identifiers) {
        found += store.accountWithIdentifier(identifier) != nullptr;
      }
    }
    return found;
  });
  if (found != kAccounts * kRounds) throw std::runtime_error("an account was not found");
  return taken / (kAccounts * kRounds) * 1000;
}

// All kinds of work take turns, so that a busy moment of the machine hits them alike.
void store(const Arguments& arguments) {
  const std::size_t records = std::stoul(arguments.at(0));
  const BenchDevice device(records, std::stoul(arguments.at(1)));
  const Value tree = propertyListFromBytes(device.bytes()).value();
  const auto saved = AccountsManager::init();
  const auto changed = saved->accountWithIdentifier(identifierOf(records / 2).str());
  // Another store, of another account, so that each meets the other's changes.
  const auto merging = AccountsManager::init();
  const auto merged = merging->accountWithIdentifier(identifierOf(records / 3).str());
  const int rounds = records > 20000 ? 9 : records > 2000 ? 25 : 101;
  std::map<std::string, std::vector<double>> figures;
  for (int round = 0; round < rounds; ++round) {
    figures["decode"].push_back(
        nanosecondsOnATidyHeap([&] { return propertyListFromBytes(device.bytes()).value(); }));
    figures["load"].push_back(nanosecondsOnATidyHeap([] { return AccountsManager::init(); }));
    figures["encode"].push_back(
        nanosecondsOnATidyHeap([&] { return binaryPropertyList(tree).value(); }));
    figures["write"].push_back(writeAndFlush(device.bytes()));
    figures["replace-barely"].push_back(replaceBarely(device.bytes()));
    figures["save"].push_back(
        saveOneChange(*changed, round, [&] { return saved->saveAllAccounts(); }));
    figures["save-changes"].push_back(
        saveOneChange(*merged, round, [&] { return merging->saveChanges().isSaved; }));
    figures["picoseconds-a-look-up"].push_back(lookUp(*saved, records));
  }
  for (const auto& [name, values] : figures) print(name.c_str(), median(values));
}

// The accounts file is made by another process of this program, so that this one is fresh.
void makeInAnotherProcess(const std::string& program, const std::string& records,
                          const std::string& children) {
  const std::string command = "\"" + program + "\" make \"" +
                              AccountsManager::fullPathToTallbookPlist() + "\" " + records + " " +
                              children;
  if (std::system(command.c_str()) != 0) throw std::runtime_error("no accounts file");
}

void first(const Arguments& arguments) {
  const BenchDevice device(0, 0);
  makeInAnotherProcess(arguments.at(1), arguments.at(0), "0");
  std::shared_ptr<AccountsManager> store;
  print("load", nanoseconds([&] { return store = AccountsManager::init(); }));
  const auto account = store->accountWithIdentifier(identifierOf(0).str());
  account->setAccountPropertyForKey(1, "PortNumber");
  bool saved = false;
  print("save", nanoseconds([&] { return saved = store->saveAllAccounts(); }));
  if (!saved) throw std::runtime_error("the save failed");
}

// The resource usage that the kernel counts for a process starts with that of the program that
// started it; this figure belongs to the program's own memory.
double peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kibibytes = 0;
    if (word == "VmHWM:" && status >> kibibytes) return kibibytes * 1024;
  }
  throw std::runtime_error("the system does not tell the peak memory");
}

void memory(const Arguments& arguments) {
  const BenchDevice device(0, 0);
  makeInAnotherProcess(arguments.at(2), arguments.at(0), arguments.at(1));
  const double before = peakMemory();
  const auto loaded = AccountsManager::init();
  const double after = peakMemory();
  if (loaded->count() != std::stoul(arguments.at(0))) throw std::runtime_error("nothing loaded");
  print("peak", after - before);
  print("file", static_cast<double>(readBytes(AccountsManager::fullPathToTallbookPlist()).size()));
}

/// What the process has taken from the allocator and not given back.
double heldMemory() {
  const auto heap = mallinfo2();
  return static_cast<double>(heap.uordblks + heap.hblkhd);
}

void watch(const Arguments& arguments) {
  const std::size_t records = std::stoul(arguments.at(0));
  const BenchDevice device(records, 0);
  // The catalogue of account types is neither's.
  BasicAccount::initialize();
  const double before = heldMemory();
  const auto store = AccountsManager::init();
  const double withStore = heldMemory();
  const auto watcher = AccountsWatcher::fromNow();
  const double withWatcher = heldMemory();
  const auto account = store->accountWithIdentifier(identifierOf(records / 2).str());
  std::map<std::string, std::vector<double>> figures;
  for (int round = 0; round < 101; ++round) {
    figures["load"].push_back(nanosecondsOnATidyHeap([] { return AccountsManager::init(); }));
    account->setAccountPropertyForKey(round, "PortNumber");
    if (!store->saveChanges().isSaved) throw std::runtime_error("the save failed");
    AccountsWatcher::Answer answer;
    figures["answer"].push_back(nanosecondsOnATidyHeap([&] {
      answer = watcher->changes();
      return 0;
    }));
    if (answer.accounts.size() != 1) throw std::runtime_error("another answer than expected");
  }
  for (const auto& [name, values] : figures) print(name.c_str(), median(values));
  print("store", withStore - before);
  print("watcher", withWatcher - withStore);
}

double readAndDecode(const char* path) {
  return nanoseconds([&] {
    std::error_code error;
    return propertyListFromBytes(Platform::current().fileSystem().readFile(path, error));
  });
}

// The loads and saves of a migration, each done by itself: the accounts file as it was read by the
// decision, the store and the chain, each legacy file, and the store saved once more wherever the
// migration saves it.
double loadsAndSaves() {
  using Self = AccountsDataMigrator;
  using Step = bool (Self::*)(const Self::Store&);
  constexpr Step kSteps[] = {&Self::_migrateAccountsFrom7A149, &Self::_migrateAccountsFrom7A150,
                             &Self::_migrateAccountsFrom7A153, &Self::_migrateAccountsFrom7A241,
                             &Self::_migrateAccountsFrom7A242, &Self::_migrateAccountsFrom8A293};
  constexpr Step kSavingSteps[] = {
      &Self::_migrateAccountsFrom8B117, &Self::_migrateAccountsFrom8C136,
      &Self::_migrateAccountsFrom8F191, &Self::_migrateAccountsFrom9A182,
      &Self::_migrateAccountsFrom9A334, &Self::_migrateAccountsFrom9B176};
  Self migrator;
  Self::Store store;
  double taken = nanoseconds([&] { return store = AccountsManager::initInsideOfMigration(); });
  for (const char* path :
       {tallbookAccountsPath(), tallbookAccountsPath(), mailAccountsPath(), syncoraAccountPath()}) {
    taken += readAndDecode(path);
  }
  const auto save = [&] { taken += nanoseconds([&] { return store->saveAllAccounts(); }); };
  if (AccountsManager::_oldMailAccountsInformationFound()) {
    migrator._migrateSyncoraAccounts(store);
    migrator._migrateMailAccounts(store);
  }
  for (const Step step : kSteps) (migrator.*step)(store);
  for (const Step step : kSavingSteps) {
    (migrator.*step)(store);
    save();
  }
  save();
  return taken;
}

void migration(Before before, const Arguments& arguments) {
  const std::size_t accounts = std::stoul(arguments.at(0));
  const BenchDevice device(0, 0);
  const QuietConsole quiet;
  std::map<std::string, std::vector<double>> figures;
  // The process keeps its memory, so that both sides find it warm and the whole does not pay for
  // pages that its parts find there.
  mallopt(M_MMAP_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  for (int round = 0; round < (accounts > 2000 ? 7 : 15); ++round) {
    writeFilesBefore(before, accounts);
    bool migrated = false;
    figures["migration"].push_back(
        nanoseconds([&] { return migrated = AccountsDataMigrator().performMigration(); }));
    if (!migrated) throw std::runtime_error("the migration failed");
    writeFilesBefore(before, accounts);
    migrate::Story story(true);
    figures["migration-with-report"].push_back(nanoseconds([&] {
      AccountsDataMigrator migrator;
      migrator.setObserver(&story);
      return migrator.performMigration();
    }));
    writeFilesBefore(before, accounts);
    AccountsManager::_setShouldSkipNotifications(true);
    figures["loads-and-saves"].push_back(loadsAndSaves());
    AccountsManager::_setShouldSkipNotifications(false);
  }
  for (const auto& [name, values] : figures) print(name.c_str(), median(values));
}

}  // namespace
}  // namespace tallbook::bench

int main(int count, char** words) {
  using namespace tallbook::bench;
  const std::map<std::string, std::function<void(const Arguments&)>> measures = {
      {"make", make},
      {"make-old", makeOld},
      {"decode", decode},
      {"encode", encode},
      {"store", store},
      {"first", first},
      {"memory", memory},
      {"watch", watch},
      {"legacy", [](const Arguments& rest) { migration(Before::LegacyFiles, rest); }},
      {"zero", [](const Arguments& rest) { migration(Before::VersionZero, rest); }}};
  Arguments arguments(words + 1, words + count);
  try {
    const auto measure = measures.find(arguments.at(0));
    if (measure == measures.end()) throw std::runtime_error("no such measure: " + arguments.at(0));
    arguments.erase(arguments.begin());
    arguments.emplace_back(words[0]);
    measure->second(arguments);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s: %s\n", words[0], problem.what());
    return 1;
  }
}
