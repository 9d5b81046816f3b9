// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <chrono>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "tallbook/AccountsHistory.h"

#include "store/AccountsFile.h"
#include "store/Generations.h"
#include "tests/store/StoreDevice.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

struct stat statusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return status;
}

/// A device whose account "a" is called 0, then 1 and so on.
class AGeneration : public StoreDevice {
 protected:
  AGeneration() { writeAccounts({record("a", {{"DisplayName", "0"}})}); }

  void save(const char* name) {
    const auto store = AccountsManager::init();
    store->accountWithIdentifier("a")->setDisplayName(name);
    ASSERT_TRUE(store->saveAllAccounts());
    ASSERT_EQ(stored("a")["DisplayName"], Value(name));
  }
  void later(std::chrono::nanoseconds time) { platform().localClock.moment += time; }
  void prefer(const Value& number) {
    test::writePropertyList(preferencesFolder() + "/com.orvane.tallbook-history.plist",
                            Dictionary::make({{"Generations", number}}));
  }
  std::string keepForAMigration() {
    std::error_code error;
    const auto folder = platform().fileSystem().openFolder(preferencesFolder(), error);
    const FileVersion version = folder->look("com.orvane.tallbook.plist", error).version;
    return Generations(*folder).keep(version, Generations::Cause::Migration);
  }

  /// What "a" is called in each generation, the newest first.
  static Texts kept() {
    Texts names;
    const AccountsHistory::List list = AccountsHistory::list();
    EXPECT_EQ(list.problem, "");
    for (const AccountsGeneration& generation : list.generations) {
      const auto content = AccountsHistory::content(generation.name);
      EXPECT_EQ(content.problem, "");
      const ArrayRef accounts = content.accountsFile["Accounts"].array();
      names.push_back(accounts[0].dictionary()["DisplayName"].string().str());
    }
    return names;
  }
};

TEST_F(AGeneration, IsTheFileBeforeABurstOfSaves) {
  save("1");
  EXPECT_EQ(kept(), Texts{"0"});
  later(59'999'999'999ns);
  save("2");
  later(-60s);
  save("3");
  EXPECT_EQ(kept(), Texts{"0"}) << "a clock that is set a little back is the same burst";
  later(60s + 1ns);
  save("4");
  EXPECT_EQ(kept(), (Texts{"3", "0"}));
  const auto list = AccountsHistory::list().generations;
  EXPECT_EQ(list[0].name, "2014-03-07T14-06-09.000000000Z");
  EXPECT_EQ(list[0].kept, platform().localClock.moment);
  EXPECT_EQ(list[0].size, fs::file_size(generationsFolder() + "/" + list[0].name));
}

TEST_F(AGeneration, GivesWayToMoreThanAreWanted) {
  const auto saveFor = [&](int minutes) {
    for (int i = 0; i < minutes; ++i) {
      later(1min);
      save(std::to_string(i + 1).c_str());
    }
  };
  saveFor(12);
  EXPECT_EQ(kept(), (Texts{"11", "10", "9", "8", "7", "6", "5", "4", "3", "2"}));
  prefer(3);
  saveFor(1);
  EXPECT_EQ(kept(), (Texts{"12", "11", "10"}));
  prefer("no number");
  saveFor(1);
  EXPECT_EQ(kept(), (Texts{"1", "12", "11", "10"}));
  for (const int none : {0, -1}) {
    prefer(none);
    saveFor(1);
    EXPECT_EQ(kept(), Texts());
    prefer(10);
    saveFor(1);
    EXPECT_EQ(kept(), Texts{"1"});
  }
}

TEST_F(AGeneration, IsNotEvenGivenAFolderWhereNoneIsWanted) {
  prefer(0);
  save("1");
  EXPECT_FALSE(test::exists(generationsFolder()));
  EXPECT_FALSE(logContains("generation"));
}

TEST_F(AGeneration, ComesAfterTheOnesBeforeWhateverTheClockSays) {
  save("1");
  later(-24h);
  save("2");
  save("3");
  EXPECT_EQ(kept(), (Texts{"2", "1", "0"}));
  EXPECT_EQ(AccountsHistory::list().generations[0].name, "2014-03-07T14-05-09.000000002Z");
}

TEST_F(AGeneration, OfAMigrationIsOneOfItsOwn) {
  save("1");
  EXPECT_EQ(keepForAMigration(), "");
  EXPECT_EQ(kept(), (Texts{"1", "0"})) << "in the minute of another";
  EXPECT_EQ(keepForAMigration(), "");
  save("2");
  EXPECT_EQ(kept(), (Texts{"1", "0"})) << "the same file is kept once";
  save("3");
  EXPECT_EQ(kept(), (Texts{"2", "1", "0"})) << "what the migration made stays as well";
  save("4");
  EXPECT_EQ(kept(), (Texts{"2", "1", "0"}));
  EXPECT_TRUE(AccountsHistory::list().generations[1].name.ends_with("Z-migration"));
}

TEST_F(AGeneration, OfAMigrationIsKeptThoughASaveHasKeptTheSame) {
  save("1");
  later(1min);
  save("2");
  save("1");
  EXPECT_EQ(kept(), (Texts{"1", "0"}));
  EXPECT_EQ(keepForAMigration(), "");
  EXPECT_EQ(kept(), (Texts{"1", "1", "0"}));
}

TEST_F(AGeneration, IsTheFileItselfForMobileAlone) {
  const bool mayGiveAway = ::geteuid() == 0;
  if (mayGiveAway) {
    test::writeFile(path("/etc/passwd"), "mobile:x:54321:54321::/var/mobile:/bin/false\n");
    test::writeFile(path("/etc/group"), "mobile:x:54321:\n");
  }
  const auto before = statusOf(accountsPath());
  const mode_t mask = ::umask(0777);
  save("1");
  ::umask(mask);
  const auto folder = statusOf(generationsFolder());
  EXPECT_EQ(folder.st_mode, S_IFDIR | 0700U);
  EXPECT_EQ(folder.st_uid, mayGiveAway ? 54321U : ::getuid());
  EXPECT_EQ(folder.st_gid, mayGiveAway ? 54321U : ::getgid());
  const Texts names = test::namesIn(generationsFolder());
  ASSERT_EQ(names.size(), 1u);
  EXPECT_EQ(statusOf(generationsFolder() + "/" + names[0]).st_ino, before.st_ino);
}

TEST_F(AGeneration, IsACopyWhereTheFileCannotHaveASecondName) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  const std::string before = test::readFile(accountsPath());
  Texts names;
  for (const std::errc refusal :
       {std::errc::operation_not_permitted, std::errc::operation_not_supported,
        std::errc::function_not_supported, std::errc::too_many_links,
        std::errc::cross_device_link}) {
    fs::remove_all(generationsFolder());
    test::writeFile(accountsPath(), before);
    files.failEvery("link", std::make_error_code(refusal));
    save("1");
    names = test::namesIn(generationsFolder());
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(test::readFile(generationsFolder() + "/" + names[0]), before);
    EXPECT_EQ(statusOf(generationsFolder() + "/" + names[0]).st_mode, S_IFREG | 0600U);
  }

  // The save puts its file in the place of a link, and a second name of the link leads nowhere.
  files.heal();
  later(1min);
  fs::rename(accountsPath(), preferencesFolder() + "/elsewhere");
  fs::create_symlink("elsewhere", accountsPath());
  save("2");
  names = test::namesIn(generationsFolder());
  ASSERT_EQ(names.size(), 2u);
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(generationsFolder() + "/" + names[1])));
  EXPECT_EQ(kept(), (Texts{"1", "0"}));
}

TEST_F(AGeneration, ThatCannotBeKeptFailsNoSave) {
  FailingFileSystem files(platform().realFileSystem());
  std::set<std::string> told;
  prefer(1);
  for (std::size_t n = 1;; ++n) {
    SCOPED_TRACE("operation " + std::to_string(n));
    platform().replaceFileSystem(platform().realFileSystem());
    later(1min);
    save("before");
    later(1min);
    platform().replaceFileSystem(files);
    const AccountsFile file = AccountsFile::read();
    files.failAt(n, std::make_error_code(std::errc::no_space_on_device));
    const auto [end, failure, problem, version] =
        file.replace({record("a", {{"DisplayName", "after"}})}, Generations::Cause::Save);
    if (files.operations() < n) break;
    EXPECT_EQ(stored("a")["DisplayName"], Value(end == Replacement::Done ? "after" : "before"));
    EXPECT_LE(kept().size(), 2u);
    if (problem.empty()) continue;
    EXPECT_EQ(end, Replacement::Done);
    EXPECT_TRUE(logContains(problem));
    told.insert(files.names().at(n - 1) + ": " + problem);
  }
  const char* const keeping =
      ": cannot keep the accounts file before as a generation: No space left on device";
  const char* const removing =
      ": cannot remove an old generation of the accounts file: No space left on device";
  std::set<std::string> expected;
  for (const char* name : {"folder", "names", "link", "look"})
    expected.insert(name + std::string(keeping));
  expected.insert(std::string("remove") + removing);
  EXPECT_EQ(told, expected);
}

TEST_F(AGeneration, IsKeptWheneverAnotherSaveMakesTheFolder) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  for (std::size_t n = 1; n <= files.operations() + 1; ++n) {
    SCOPED_TRACE("operation " + std::to_string(n));
    fs::remove_all(generationsFolder());
    files.heal();
    files.callAt(n, [&] { fs::create_directories(generationsFolder()); });
    const std::string before = stored("a")["DisplayName"].string().str();
    save(std::to_string(n).c_str());
    EXPECT_EQ(kept(), Texts{before});
  }
}

TEST_F(AGeneration, IsKeptOnceThoughTheSaveHasToBeRepeated) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  const auto store = AccountsManager::init();
  store->accountWithIdentifier("a")->setDisplayName("1");
  files.failEvery("rename", std::make_error_code(std::errc::io_error));
  EXPECT_FALSE(store->saveAllAccounts());
  files.heal();
  later(1h);
  EXPECT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(kept(), Texts{"0"});
}

TEST_F(AGeneration, IsAVersionThatWasReplacedWhateverOthersDo) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  std::set<Texts> met;
  for (std::size_t n = 1;; ++n) {
    SCOPED_TRACE("operation " + std::to_string(n));
    fs::remove_all(generationsFolder());
    fs::remove(accountsPath());
    writeAccounts({record("a", {{"DisplayName", "0"}})});
    files.heal();
    const auto store = AccountsManager::init();
    store->accountWithIdentifier("a")->setDisplayName("1");
    files.callAt(n, [&] {
      // Longer: another version, whatever inode and time it gets.
      test::writePropertyList(
          path("/other"),
          Dictionary::make({{"Accounts", Array::make({record("a", {{"DisplayName", "other"}})})}}));
      fs::rename(path("/other"), accountsPath());
    });
    EXPECT_TRUE(store->saveAllAccounts());
    if (files.operations() < n) break;
    met.insert(kept());
    EXPECT_EQ(test::namesIn(generationsFolder()).size(), kept().size()) << "nothing else is there";
  }
  EXPECT_EQ(met, (std::set<Texts>{{"0"}, {"other"}}));
}

TEST_F(AGeneration, IsReadByItsNameOnly) {
  save("1");
  test::writeFile(generationsFolder() + "/2014-01-01T00-00-00.000000000Z", "no property list");
  test::writePropertyList(generationsFolder() + "/2014-02-28T23-59-59.999999999Z", "no dictionary");
  const char* const none = "no generation has such a name";
  for (const auto& [name, problem] : std::initializer_list<std::pair<const char*, const char*>>{
           {"", none},
           {"../com.orvane.tallbook.plist", none},
           {"2014-02-29T00-00-00.000000000Z", none},
           {"2014-02-28T24-00-00.000000000Z", none},
           {"2014-02-28T00-00-00.000000000Z-x", none},
           {"2014-02-28T00-00-00.000000000Z", "there is no such generation"},
           {"2014-02-28T23-59-59.999999999Z", "its top level is no dictionary"}}) {
    const auto content = AccountsHistory::content(name);
    EXPECT_EQ(content.problem, problem) << name;
    EXPECT_FALSE(content.accountsFile);
  }
  EXPECT_NE(AccountsHistory::content("2014-01-01T00-00-00.000000000Z").problem, "");
  EXPECT_EQ(AccountsHistory::list().generations.size(), 3u);
}

TEST_F(AGeneration, IsForgottenForGood) {
  EXPECT_TRUE(AccountsHistory::forget().empty()) << "there is none";
  EXPECT_TRUE(AccountsHistory::list().generations.empty());
  save("1");
  test::writeFile(generationsFolder() + "/.tallbook-0123456789abcdef", "half a copy");
  fs::create_directory(generationsFolder() + "/folder");
  const auto remaining = AccountsHistory::forget();
  ASSERT_EQ(remaining.size(), 1u);
  EXPECT_EQ(remaining[0].name, "folder");
  EXPECT_NE(remaining[0].problem, "");
  EXPECT_EQ(test::namesIn(generationsFolder()), Texts{"folder"});
  EXPECT_EQ(stored("a")["DisplayName"], Value("1"));

  fs::remove_all(generationsFolder());
  fs::create_symlink("/tmp", generationsFolder());
  EXPECT_NE(AccountsHistory::list().problem, "");
  EXPECT_EQ(AccountsHistory::forget().size(), 1u);
  save("2");
  EXPECT_TRUE(logContains("cannot keep the accounts file before as a generation: "));
}

}  // namespace
}  // namespace tallbook
