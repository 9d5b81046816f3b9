// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <filesystem>

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Vocabulary.h"

#include "platform/NamedLock.h"
#include "tests/store/StoreDevice.h"
#include "tests/support/ChildProcess.h"

namespace tallbook {
namespace {

class AMigration : public StoreDevice {
 protected:
  std::string neededWork() {
    bool mail = true, syncora = true, newInfo = true;
    platform().log.lines.clear();
    AccountsManager::shouldMigrateOldMailAccountsOldSyncoraAccountsNewTallbook(&mail, &syncora,
                                                                               &newInfo);
    return std::string() + (mail ? '1' : '0') + (syncora ? '1' : '0') + (newInfo ? '1' : '0');
  }
};

TEST_F(AMigration, IsNeededForAnOlderVersion) {
  const std::pair<Value, bool> rows[] = {{11, true},  {0, true},   {"old", false},  {12, false},
                                         {13, false}, {-1, false}, {Value(), false}};
  EXPECT_FALSE(AccountsManager::tallbookNeedsToBeMigrated());
  EXPECT_TRUE(platform().log.lines.empty());
  for (const auto& [version, needed] : rows) {
    const DictionaryRef file = Dictionary::make({{"Accounts", Array::make()}});
    if (!version.isNull()) file->set("Version", version);
    writeAccountsFile(file);
    EXPECT_EQ(AccountsManager::tallbookNeedsToBeMigrated(), needed) << version.description();
  }
  EXPECT_TRUE(logContains("Tallbook Version out of date: savedVersion=11, currentVersion=12"));
  EXPECT_TRUE(logContains("Tallbook plist is missing a version number, returning NO"));
}

TEST_F(AMigration, TakesLegacyFilesFirst) {
  EXPECT_EQ(neededWork(), "000");
  EXPECT_TRUE(platform().log.lines.empty());
  writeAccounts({}, 3);
  EXPECT_EQ(neededWork(), "001");
  std::filesystem::create_directories(legacyMailPath());
  EXPECT_EQ(neededWork(), "100");
  EXPECT_TRUE(
      logContains("Tallbook needs migration! oldMailAccountsPresent=1, "
                  "oldSyncoraAccountsPresent=0, migrateNewAccountsInfo=0"));
  test::writeFile(legacySyncoraPath(), "");
  EXPECT_EQ(neededWork(), "110");
  EXPECT_EQ(std::string(mailAccountsPath()), legacyMailPath());
  EXPECT_EQ(std::string(syncoraAccountPath()), legacySyncoraPath());
  EXPECT_EQ(std::string(tallbookAccountsPath()), accountsPath());
}

TEST_F(AMigration, RefusesMissingOutParameters) {
  bool flag = false;
  const auto failure = [](bool* mail, bool* syncora, bool* newInfo) -> std::string {
    try {
      AccountsManager::shouldMigrateOldMailAccountsOldSyncoraAccountsNewTallbook(mail, syncora,
                                                                                 newInfo);
    } catch (const InternalConsistencyFailure& caught) {
      return caught.what();
    }
    return "none";
  };
  EXPECT_EQ(failure(nullptr, nullptr, nullptr), "migrateOldMailAccounts cannot be nil");
  EXPECT_EQ(failure(&flag, nullptr, &flag), "migrateOldSyncoraAccounts cannot be nil");
  EXPECT_EQ(failure(&flag, &flag, nullptr), "migrateNewAccounts cannot be nil");
}

TEST_F(AMigration, RemovesTheAccountsFileOnRequest) {
  AccountsManager::removeNewTallbookToMigrateOldAccountInformation();
  EXPECT_TRUE(platform().log.lines.empty());
  writeAccounts({record("a")});
  AccountsManager::removeNewTallbookToMigrateOldAccountInformation();
  EXPECT_FALSE(test::exists(accountsPath()));
  std::filesystem::create_directories(accountsPath());
  AccountsManager::removeNewTallbookToMigrateOldAccountInformation();
  EXPECT_TRUE(logContains("Could not remove " + accountsPath() + ". Error "));
}

TEST_F(AMigration, IsWaitedForByOtherProcesses) {
  AccountsManager::releaseMigrationLock(nullptr);
  EXPECT_TRUE(AccountsManager::waitForMigrationToFinish());
  // Whoever keeps the lock object does not keep the lock.
  const auto lock = AccountsManager::createAndLockMigrationLock();
  ASSERT_TRUE(lock);
  test::writeFile(path("/tmp/running"), "");
  test::ChildProcess waiter([&](test::ChildProcess::Parent& parent) {
    parent.say('w');
    return AccountsManager::waitForMigrationToFinish() && !test::exists(path("/tmp/running"));
  });
  EXPECT_EQ(waiter.hear(), 'w');
  std::filesystem::remove(path("/tmp/running"));
  AccountsManager::releaseMigrationLock(lock);
  EXPECT_EQ(waiter.wait(), 0);
  AccountsManager::releaseMigrationLock(lock);
}

TEST_F(AMigration, CannotBeWaitedForWithoutItsLock) {
  std::filesystem::create_directory(path(kAccountMigrationLockFilename));
  EXPECT_FALSE(AccountsManager::createAndLockMigrationLock());
  EXPECT_FALSE(AccountsManager::waitForMigrationToFinish());
}

}  // namespace
}  // namespace tallbook
