// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cstdlib>
#include <filesystem>

#include "tests/migration/MigrationDevice.h"

namespace tallbook {
namespace {
namespace fs = std::filesystem;

/// A device whose migrations keep a log of all that they saw.
class ACollatedLog : public MigrationDevice {
 protected:
  ACollatedLog() { arrangeLogged("chain/legacy-and-03.before"); }

  void arrangeLogged(const std::string& device) {
    arrange(data(device).dictionary());
    test::writePropertyList(preferencesFolder() + "/com.orvane.tallbook-logging.plist",
                            Dictionary::make({{"TBSaveMigrationInformation", true}}));
  }
  std::string folder() const { return home() + "/Library/Logs/Dorvix/AccountMigration"; }
  std::string logPath() const {
    return folder() + "/AccountMigrationInformation-2014-3-7-14-5-9.txt";
  }
};

TEST_F(ACollatedLog, IsReadByPlistlib) {
  if (std::system("command -v python3 >/dev/null") != 0) GTEST_SKIP() << "needs python3";
  const std::string kept = path("/tmp/kept");
  fs::create_directories(kept);
  fs::copy_file(legacyMailPath(), kept + "/OldMailAccounts");
  fs::copy_file(legacySyncoraPath(), kept + "/OldExchangeAccount");
  fs::copy_file(accountsPath(), kept + "/OldTallbook");
  EXPECT_TRUE(migrate());
  fs::copy_file(accountsPath(), kept + "/NewTallbook");
  const std::string command =
      "python3 " TALLBOOK_TEST_DATA "/compare_log.py " + logPath() + " " + kept;
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(consoleLines(), (std::vector<std::string>{"Migrating accounts",
                                                      "Saving collated migration information"}));
}

TEST_F(ACollatedLog, HoldsEmptyDictionariesForFilesThatCouldNotBeRead) {
  fs::remove(accountsPath());
  fs::remove(legacySyncoraPath());
  test::writeFile(legacyMailPath(), "no property list");
  EXPECT_TRUE(migrate());
  const DictionaryRef log = test::readPropertyList(logPath()).dictionary();
  ASSERT_TRUE(log);
  EXPECT_EQ(log->size(), 3u) << "the Exchange file was not looked at";
  EXPECT_EQ((*log)["OldMailAccounts"], Value(Dictionary::make()));
  EXPECT_EQ((*log)["OldTallbook"], Value(Dictionary::make()));
  EXPECT_EQ((*log)["NewTallbook"], readAccountsFile());
}

TEST_F(ACollatedLog, IsMadeOnlyWhereItIsWantedAndThereWasWork) {
  arrange(data("chain/legacy-and-03.before").dictionary());
  EXPECT_TRUE(migrate());
  EXPECT_FALSE(test::exists(folder()));

  arrangeLogged("chain/from-12.before");
  EXPECT_TRUE(migrate());
  EXPECT_TRUE(fs::is_directory(folder()));
  EXPECT_TRUE(fs::is_empty(folder()));
  EXPECT_EQ(consoleLines(), std::vector<std::string>{"Saving collated migration information"});
}

TEST_F(ACollatedLog, ReplacesOneOfTheSameSecond) {
  EXPECT_TRUE(migrate());
  const std::string first = test::readFile(logPath());
  restart();
  writeAccounts({}, 11);
  EXPECT_TRUE(migrate());
  EXPECT_NE(test::readFile(logPath()), first);
  EXPECT_EQ(test::namesIn(folder()).size(), 1u);
  restart();
  platform().localClock.time = {2014, 12, 31, 0, 0, 0};
  writeAccounts({}, 11);
  EXPECT_TRUE(migrate());
  EXPECT_TRUE(test::exists(folder() + "/AccountMigrationInformation-2014-12-31-0-0-0.txt"));
}

TEST_F(ACollatedLog, IsGivenUpWhereSomethingIsInItsWay) {
  const auto lastLine = [&] {
    EXPECT_TRUE(migrate());
    EXPECT_FALSE(test::exists(legacyMailPath()));
    return consoleLines().back();
  };
  test::writeFile(folder(), "a file");
  EXPECT_EQ(lastLine(), "Brennick warning: " + folder() + " already exists and is not a directory");
  EXPECT_EQ(test::readFile(folder()), "a file");

  arrangeLogged("chain/legacy-and-03.before");
  fs::remove_all(home() + "/Library/Logs");
  test::writeFile(home() + "/Library/Logs", "a file");
  EXPECT_TRUE(
      lastLine().starts_with("AccountMigration warning: Could not create the directory to store "
                             "migration information at " +
                             folder() + " [Error = "));

  arrangeLogged("chain/legacy-and-03.before");
  fs::create_directories(logPath());
  EXPECT_EQ(lastLine(), "Saving collated migration information");
  EXPECT_EQ(test::namesIn(folder()).size(), 1u) << "a temporary file stayed behind";
}

}  // namespace
}  // namespace tallbook
