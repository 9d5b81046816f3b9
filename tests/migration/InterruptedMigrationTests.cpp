// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <set>

#include "tallbook/InternalConsistencyFailure.h"

#include "tests/migration/MigrationDevice.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {

String usernameOf(const DictionaryRef& record) {
  const std::string text = record["Username"].string().str();
  return text.substr(0, text.find('@'));
}

/// User names at any depth, without their mail domain, which some steps add or take off.
std::set<std::string> usernamesIn(const Value& value) {
  std::set<std::string> names;
  if (const ArrayRef array = value.array()) {
    for (const Value& element : *array) names.merge(usernamesIn(element));
  }
  if (const DictionaryRef entries = value.dictionary()) {
    if (entries->contains("Username")) names.insert(usernameOf(entries).str());
    for (const auto& [key, entry] : *entries) names.merge(usernamesIn(entry));
  }
  return names;
}

/// User names of the records in `some` that `others` does not have.
Value usernamesOfThoseNotIn(const ArrayRef& others, const ArrayRef& some) {
  const ArrayRef names = Array::make();
  for (const Value& record : *some) {
    if (!others->contains(record)) names->append(usernameOf(record.dictionary()));
  }
  return names;
}

/// A device that is migrated from `data/chain/NAME.before.plist` to `NAME.after.plist`, a log
/// included, over a file system that fails or stops.
class AnInterruptedMigration : public MigrationDevice,
                               public ::testing::WithParamInterface<const char*> {
 protected:
  AnInterruptedMigration()
      : before(data(chain(".before")).dictionary()), after(data(chain(".after")).dictionary()) {}

  static std::string chain(const char* moment) {
    return std::string("chain/") + GetParam() + moment;
  }
  void arrangeBefore() {
    arrange(before);
    test::writePropertyList(preferencesFolder() + "/com.orvane.tallbook-logging.plist",
                            Dictionary::make({{"TBSaveMigrationInformation", true}}));
  }
  /// Migrates in a process that ends at the n-th operation; false when it came to its own end.
  bool migrateUpTo(std::size_t n) {
    FailingFileSystem files(platform().realFileSystem());
    platform().replaceFileSystem(files);
    files.stopAt(n);
    bool isStopped = false;
    try {
      migrate();
    } catch (const Stopped&) {
      isStopped = true;
    }
    platform().replaceFileSystem(platform().realFileSystem());
    return isStopped;
  }
  bool migrateInANewProcess() {
    restart();
    tellFacts(before);
    return migrate();
  }
  bool hasLegacyFiles() const {
    return test::exists(legacyMailPath()) || test::exists(legacySyncoraPath());
  }

  /// The accounts file is as it was or whole, and every account is in it or in a legacy file.
  void expectNothingLost() {
    const Value file = readAccountsFile();
    if (test::exists(accountsPath())) {
      ASSERT_TRUE(file.dictionary() && file.dictionary()["Accounts"].array());
    }
    std::set<std::string> found = usernamesIn(file);
    // What gave way to a legacy file by contract is kept.
    const std::string generations = preferencesFolder() + "/.tallbook-generations/";
    for (const std::string& name : test::namesIn(generations)) {
      found.merge(usernamesIn(test::readPropertyList(generations + name)));
    }
    found.merge(usernamesIn(test::readPropertyList(legacyMailPath())));
    found.merge(usernamesIn(test::readPropertyList(legacySyncoraPath())));
    for (const std::string& name : usernamesIn(after)) EXPECT_TRUE(found.contains(name)) << name;
  }
  /// Nothing is left to do, and the accounts file holds all accounts but those that cannot be
  /// converted.
  void expectTheEnd() {
    EXPECT_EQ(readAccountsFile().dictionary()["Version"], Value(12));
    EXPECT_FALSE(test::exists(sentinelPath()));
    EXPECT_FALSE(test::exists(legacySyncoraPath()));
    const bool mailStays = (*after)["Legacy Mail Stays"].boolValue();
    ASSERT_EQ(test::exists(legacyMailPath()), mailStays);
    if (mailStays) {
      EXPECT_EQ(test::readPropertyList(legacyMailPath()), (*before)["Legacy Mail"]);
    }
    const auto found = usernamesIn(readAccountsFile());
    for (const std::string& name : usernamesIn(after)) EXPECT_TRUE(found.contains(name)) << name;
  }

  DictionaryRef before;
  DictionaryRef after;
};

// What the next migration finds depends on the moment, as docs/migration.md tells.
TEST_P(AnInterruptedMigration, IsFollowedByOneThatLosesNothing) {
  std::set<std::string> moments;
  for (std::size_t n = 1;; ++n) {
    SCOPED_TRACE("operation " + std::to_string(n));
    arrangeBefore();
    const Value accountsBefore = readAccountsFile();
    if (!migrateUpTo(n)) break;
    EXPECT_TRUE(isLockFree());
    expectNothingLost();
    const Value accountsFile = readAccountsFile();
    const ArrayRef accounts = readAccounts();
    const bool wasRemoving = test::exists(sentinelPath());
    const bool wasReplacing = std::ranges::any_of(
        test::namesIn(preferencesFolder()),
        [](const std::string& name) { return name.starts_with(".tallbook-claim-"); });
    const bool hadLegacyFiles = hasLegacyFiles();
    EXPECT_TRUE(migrateInANewProcess());
    expectTheEnd();
    if (wasReplacing) {
      // The next save finishes the one that was stopped, and merges with what that one wrote.
      moments.insert("while the accounts file was replaced");
    } else if (accountsFile == accountsBefore) {
      moments.insert("before the first save");
      EXPECT_TRUE(test::matches((*after)["Accounts"], readAccounts()));
    } else if (wasRemoving) {
      moments.insert("while the legacy files were removed");
      EXPECT_EQ(readAccountsFile(), accountsFile);
      EXPECT_TRUE(test::matches((*after)["Accounts"], readAccounts()));
    } else if (hadLegacyFiles) {
      moments.insert("after a save, legacy files present");
      const DictionaryRef again = (*after)["Converted Again"].dictionary();
      EXPECT_EQ(usernamesOfThoseNotIn(readAccounts(), accounts), again["Gone"]);
      EXPECT_EQ(usernamesOfThoseNotIn(accounts, readAccounts()), again["Added"]);
    } else {
      moments.insert("after a save, no legacy files");
      EXPECT_EQ(readAccountsFile(), accountsFile);
    }
  }
  EXPECT_GE(moments.size(), 2u);
  EXPECT_TRUE(test::matches((*after)["Accounts"], readAccounts()));
}

TEST_P(AnInterruptedMigration, ReachesItsEndWhicheverOperationFails) {
  std::size_t n = 1;
  for (;; ++n) {
    SCOPED_TRACE("operation " + std::to_string(n));
    arrangeBefore();
    const bool hadAccounts = test::exists(accountsPath());
    const std::string accounts = hadAccounts ? test::readFile(accountsPath()) : "";
    FailingFileSystem files(platform().realFileSystem());
    platform().replaceFileSystem(files);
    files.failAt(n, std::make_error_code(std::errc::no_space_on_device));
    bool answer = false;
    try {
      answer = migrate();
    } catch (const InternalConsistencyFailure&) {
      EXPECT_EQ(files.names().at(n - 1), "readFile") << "only the catalogue is needed that much";
    }
    if (files.operations() < n) break;
    // What cannot be looked at or read may end the migration early, or leave a legacy file to the
    // next one.
    const std::string& failed = files.names().at(n - 1);
    if (failed != "look" && failed != "read" && failed != "readFile" && failed != "openFolder") {
      EXPECT_TRUE(answer);
      EXPECT_TRUE(test::matches((*after)["Accounts"], readAccounts()));
      EXPECT_EQ(hadAccounts, std::ranges::count(generations(), accounts) == 1)
          << "the next save keeps what could not be kept at first";
    }
    expectNothingLost();
    EXPECT_TRUE(migrateInANewProcess());
    // The accounts of one legacy file that are replaced by those of the other, which could not be
    // read at first, are in a generation alone, by contract.
    expectNothingLost();
    if (failed != "look" && failed != "read" && failed != "openFolder") expectTheEnd();
  }
  EXPECT_GT(n, 70u) << "at least seven saves of ten operations";
}

INSTANTIATE_TEST_SUITE_P(, AnInterruptedMigration,
                         ::testing::Values("legacy-alone", "legacy-and-03", "legacy-half",
                                           "from-00"),
                         [](const auto& tested) {
                           std::string name = tested.param;
                           std::erase(name, '-');
                           return name;
                         });

class TwoMigrations : public MigrationDevice {
 protected:
  TwoMigrations() { arrange(data("chain/legacy-alone.before").dictionary()); }

  /// A process that says 'h' when it holds the lock, before its first save, and waits for an
  /// answer.
  bool migrateWithAPause(test::ChildProcess::Parent& parent) {
    FailingFileSystem files(platform().realFileSystem());
    platform().replaceFileSystem(files);
    // The copy aside has been made by then.
    files.callAt(8, [&] {
      parent.say('h');
      parent.hear();
    });
    return migrate();
  }
  void expectTheEnd() {
    const DictionaryRef after = data("chain/legacy-alone.after").dictionary();
    EXPECT_TRUE(test::matches((*after)["Accounts"], readAccounts()));
    EXPECT_FALSE(test::exists(legacyMailPath()));
    EXPECT_TRUE(isLockFree());
  }
};

TEST_F(TwoMigrations, AtOnceRunOneAfterTheOther) {
  test::ChildProcess first([&](auto& parent) {
    return migrateWithAPause(parent) && consoleContains("Migrating accounts");
  });
  ASSERT_EQ(first.hear(), 'h');
  test::ChildProcess second([&](auto& parent) {
    parent.say('w');
    return migrate() && !consoleContains("Migrating accounts") && !test::exists(legacyMailPath());
  });
  EXPECT_EQ(second.hear(), 'w');
  EXPECT_FALSE(isLockFree());
  first.say('g');
  EXPECT_EQ(first.wait(), 0);
  EXPECT_EQ(second.wait(), 0);
  expectTheEnd();
}

TEST_F(TwoMigrations, OfWhichTheFirstIsKilledLeaveTheWorkToTheSecond) {
  test::ChildProcess killed([&](auto& parent) { return migrateWithAPause(parent); });
  ASSERT_EQ(killed.hear(), 'h');
  EXPECT_FALSE(isLockFree());
  killed.kill();
  EXPECT_TRUE(migrate());
  expectTheEnd();
}

}  // namespace
}  // namespace tallbook
