// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <filesystem>
#include <functional>

#include "tallbook/InternalConsistencyFailure.h"

#include "store/Notifications.h"
#include "tests/migration/MigrationDevice.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {
namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

/// A device with both legacy files and an accounts file of version 3.
class ADriver : public MigrationDevice {
 protected:
  ADriver() { arrangeAll(); }

  void arrangeAll() {
    arrange(data("chain/legacy-and-03.before").dictionary());
    test::writeFile(markerPath(), "");
    accountsBefore = test::readFile(accountsPath());
  }
  std::string markerPath() const { return home() + "/Library/Mail/AutoFetchEnabled"; }
  bool areAccountsMigrated() const {
    return readAccountsFile().dictionary()["Version"] == Value(12);
  }
  /// Which of the two legacy files and the sentinel there are.
  std::string oldFiles() const {
    std::string found;
    if (test::exists(legacyMailPath())) found += "mail ";
    if (test::exists(legacySyncoraPath())) found += "exchange ";
    if (test::exists(sentinelPath())) found += "sentinel ";
    return found;
  }
  static std::string couldNotDelete(const std::string& path) {
    return "-[AccountsDataMigrator(Internal) _removeOldAccountsInfo]. Could not delete " + path +
           ". Error = ";
  }

  std::string accountsBefore;
};

TEST_F(ADriver, AnswersToTheHost) {
  EXPECT_EQ(AccountsDataMigrator().dataClassName(), "accounts");
}

TEST_F(ADriver, EndsInOneOfFewWays) {
  const auto nothing = [] {};
  const auto lockPathTaken = [&] { fs::create_directory(lockPath()); };
  const auto sentinel = [&] { test::writeFile(sentinelPath(), ""); };
  const auto noLegacyFiles = [&] {
    fs::remove(legacyMailPath());
    fs::remove(legacySyncoraPath());
    writeAccountsFile(Dictionary::make({{"Accounts", Array::make()}}));
  };
  const auto damagedAccountsFile = [&] {
    noLegacyFiles();
    test::writeFile(accountsPath(), "no property list");
  };
  const auto noSaving = [&] { test::writeFile(path("/etc/passwd"), "nobody to own the file"); };
  const char* const sentinelFound =
      "Detected that a removal old accounts info was in progress. Early return!.";
  struct Outcome {
    std::function<void()> arrangeMore;
    bool result;
    std::string happened;  ///< the file put aside and saved, the mail application told
    std::string oldFiles;
    Lines console;
  };
  for (const Outcome& each : {
           Outcome{lockPathTaken, false, "", "mail exchange ", {}},
           Outcome{sentinel, true, "aside ", "", {sentinelFound}},
           Outcome{noLegacyFiles, true, "aside saved told ", "", {}},
           Outcome{damagedAccountsFile, true, "aside saved told ", "", {}},
           Outcome{nothing, true, "aside saved told ", "", {"Migrating accounts"}},
           Outcome{noSaving, true, "aside told ", "mail exchange ", {"Migrating accounts"}},
       }) {
    fs::remove_all(lockPath());
    arrangeAll();
    each.arrangeMore();
    const std::string before = test::readFile(accountsPath());
    EXPECT_EQ(migrate(), each.result);
    std::string happened;
    if (test::exists(copyPath()) && test::readFile(copyPath()) == before) happened += "aside ";
    if (areAccountsMigrated() && test::readFile(accountsPath()) != before) happened += "saved ";
    if (!test::exists(markerPath())) happened += "told ";
    EXPECT_EQ(happened, each.happened);
    EXPECT_EQ(oldFiles(), each.oldFiles);
    EXPECT_EQ(consoleLines(), each.console);
    const std::vector<std::pair<std::string, std::string>> notices(
        test::exists(markerPath()) ? 0 : 1, {"com.orvane.quillpost", "MailAccounts"});
    EXPECT_EQ(platform().capturedPreferences.notices, notices);
    EXPECT_FALSE(Notifications::areSkipped());
    EXPECT_TRUE(isLockFree());
  }
}

TEST_F(ADriver, GivesLockAndNotificationsBackWhenAFailureIsThrown) {
  platform().resources.takeAway("AccountTypesProperties");
  EXPECT_THROW(migrate(), InternalConsistencyFailure);
  EXPECT_TRUE(isLockFree());
  EXPECT_FALSE(Notifications::areSkipped());
  EXPECT_EQ(test::readFile(accountsPath()), accountsBefore);
  EXPECT_EQ(oldFiles(), "mail exchange ");
  restart();
  EXPECT_TRUE(migrate());
  EXPECT_EQ(oldFiles(), "");
}

TEST_F(ADriver, NotifiesNobodyOfItsSaves) {
  platform().resources.takeAway("AccountCreators");
  EXPECT_TRUE(migrate());
  const auto store = AccountsManager::init();
  store->accountWithIdentifier("imap-b")->setDisplayName("changed");
  EXPECT_THROW(static_cast<void>(store->saveAllAccounts()), InternalConsistencyFailure)
      << "a save that notifies would have failed";
}

TEST_F(ADriver, PutsTheAccountsFileAsideAsFarAsItCan) {
  const std::string failed = "Error trying to save an tallbook plist copy: ";
  const std::string stuck = "Couldn't remove existing tallbook copy at " + copyPath();
  struct Case {
    std::function<void()> arrangeMore;
    bool copied;
    std::vector<std::string> messages;
  };
  for (const Case& each : {
           Case{[&] { test::writeFile(copyPath(), "an older and longer copy" + accountsBefore); },
                true,
                {}},
           Case{[&] { fs::create_directories(copyPath() + "/folder"); }, false, {stuck, failed}},
           Case{[&] {
                  fs::remove_all(home() + "/Library/Logs/Dorvix");
                  fs::create_directory_symlink("../Preferences", home() + "/Library/Logs/Dorvix");
                },
                false,
                {stuck, failed}},
           Case{[&] {
                  fs::rename(accountsPath(), copyPath());
                  fs::create_symlink("../Logs/Dorvix/" + fs::path(copyPath()).filename().string(),
                                     accountsPath());
                },
                true,
                {}},
           Case{[&] { fs::remove_all(home() + "/Library/Logs"); }, false, {failed}},
           Case{[&] { fs::remove(accountsPath()); }, false, {failed}},
       }) {
    arrangeAll();
    each.arrangeMore();
    EXPECT_TRUE(migrate());
    EXPECT_TRUE(areAccountsMigrated());
    const Lines lines = consoleLines();
    ASSERT_EQ(lines.size(), each.messages.size() + 1);
    EXPECT_EQ(lines.back(), "Migrating accounts");
    for (std::size_t index = 0; index < each.messages.size(); ++index) {
      EXPECT_TRUE(lines[index].starts_with(each.messages[index])) << lines[index];
    }
    if (each.copied) {
      EXPECT_EQ(test::readFile(copyPath()), accountsBefore);
    }
  }
}

TEST_F(ADriver, FinishesARemovalWhereverItWasInterrupted) {
  const std::string text = "Old Account Information Removal Sentinel";
  struct Row {
    std::size_t operation;
    std::string left;
    std::string sentinel;
  };
  // The sentinel is made, written and finished, each file removed, all in a folder opened before.
  for (const auto& [n, left, sentinel] :
       {Row{3, "mail exchange sentinel ", text.substr(0, text.size() / 2)},
        Row{6, "mail exchange sentinel ", text}, Row{8, "mail sentinel ", text},
        Row{10, "sentinel ", text}}) {
    SCOPED_TRACE(n);
    arrangeAll();
    FailingFileSystem files(platform().realFileSystem());
    platform().replaceFileSystem(files);
    files.stopAt(n);
    EXPECT_THROW(AccountsDataMigrator()._removeOldAccountsInfo(), Stopped);
    EXPECT_EQ(oldFiles(), left);
    EXPECT_EQ(test::readFile(sentinelPath()), sentinel);
    restart();
    EXPECT_TRUE(migrate());
    EXPECT_EQ(oldFiles(), "");
    EXPECT_EQ(test::readFile(accountsPath()), accountsBefore);
  }
}

TEST_F(ADriver, TellsWhichOldFileItCouldNotDelete) {
  const auto migrateFailingAt = [&](std::size_t n) {
    arrangeAll();
    FailingFileSystem files(platform().realFileSystem());
    platform().replaceFileSystem(files);
    files.failAt(n, std::make_error_code(std::errc::io_error));
    EXPECT_TRUE(migrate());
    platform().replaceFileSystem(platform().realFileSystem());
    return files.operations();
  };
  const std::size_t all = migrateFailingAt(0);
  struct Case {
    std::size_t beforeTheLast;
    std::string left;
    std::string deletionOf;
  };
  // The sentinel is made; Exchange file, mail file, sentinel and, last, the mail fetch marker go,
  // each from a folder opened before, the first two after a look at them.
  for (const Case& each : {
           Case{12, "", sentinelPath()},
           Case{7, "mail exchange ", legacySyncoraPath()},
           Case{4, "mail ", legacyMailPath()},
           Case{2, "sentinel ", sentinelPath()},
       }) {
    migrateFailingAt(all - each.beforeTheLast);
    EXPECT_EQ(oldFiles(), each.left);
    ASSERT_EQ(consoleLines().size(), 2u) << each.deletionOf;
    EXPECT_TRUE(consoleLines()[1].starts_with(couldNotDelete(each.deletionOf)));
    EXPECT_TRUE(areAccountsMigrated());
  }
}

}  // namespace
}  // namespace tallbook
