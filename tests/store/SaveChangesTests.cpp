// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <filesystem>

#include "tests/store/StoreDevice.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {

using Kind = AccountsFileState::Kind;

class SavingChanges : public StoreDevice {
 protected:
  void SetUp() override { platform().log.listening = false; }

  /// Identifiers of the accounts file's records, in its order, parted by blanks.
  std::string orderInFile() const {
    std::string identifiers;
    for (const Value& element : readAccounts()) {
      if (!identifiers.empty()) identifiers += " ";
      identifiers += element.dictionary()["Identifier"].string().str();
    }
    return identifiers;
  }
  /// What another process does: load, change, save.
  static void elsewhere(const std::function<void(AccountsManager&)>& change) {
    const auto store = AccountsManager::init();
    change(*store);
    EXPECT_TRUE(store->saveChanges().isSaved);
  }
};

TEST_F(SavingChanges, KeepsWhatOthersDidToWholeAccounts) {
  writeAccounts({record("a"), record("b"), record("c"), record("d")});
  const auto store = AccountsManager::init();
  elsewhere([](AccountsManager& other) {
    other.deleteAccountWithIdentifier("b");
    other.deleteAccountWithIdentifier("c");
    other.insertAccount(BasicAccount::initWithProperties(record("e")));
    other.accountWithIdentifier("d")->setDisplayName("theirs");
  });
  store->accountWithIdentifier("c")->setDisplayName("mine");
  store->deleteAccountWithIdentifier("d");
  store->insertAccount(BasicAccount::initWithProperties(record("f")));
  const SaveReceipt receipt = store->saveChanges();
  EXPECT_TRUE(receipt.isSaved);
  EXPECT_EQ(receipt.attempts, 1u);
  EXPECT_EQ(orderInFile(), "a e c f");
  std::vector<std::string> clashes;
  for (const SaveClash& clash : receipt.clashes) clashes.push_back(clash.account.str());
  std::ranges::sort(clashes);
  EXPECT_EQ(clashes, (std::vector<std::string>{"c", "d"}));

  // What was taken over is in the file, not in the store, and stays there.
  EXPECT_EQ(order(*store), "a b c f");
  EXPECT_TRUE(store->saveChanges().clashes.empty());
  EXPECT_EQ(orderInFile(), "a e c f");
}

TEST_F(SavingChanges, WritesNothingWhereNothingIsToBeWritten) {
  writeAccounts({record("a")});
  const auto store = AccountsManager::init();
  const auto before = std::filesystem::last_write_time(accountsPath());
  EXPECT_TRUE(store->saveChanges().isSaved);
  elsewhere([](AccountsManager& other) { other.accountWithIdentifier("a")->setDisplayName("x"); });
  const std::string bytes = test::readFile(accountsPath());
  const auto between = std::filesystem::last_write_time(accountsPath());
  EXPECT_NE(between, before);
  store->accountWithIdentifier("a")->setDisplayName("x");
  EXPECT_TRUE(store->saveChanges().isSaved);
  EXPECT_EQ(test::readFile(accountsPath()), bytes);
  EXPECT_EQ(std::filesystem::last_write_time(accountsPath()), between);
}

TEST_F(SavingChanges, KeepsWhatNoStoreCanLoad) {
  writeAccounts({record("a"), recordOfType("Future", "b"), "no record", record("c")});
  const auto store = AccountsManager::init();
  store->accountWithIdentifier("a")->setDisplayName("changed");
  EXPECT_TRUE(store->saveChanges().isSaved);
  const ArrayRef records = readAccounts();
  ASSERT_EQ(records.size(), 4u);
  EXPECT_TRUE(records->contains(Value(recordOfType("Future", "b"))));
  EXPECT_TRUE(records->contains(Value("no record")));
}

// The other save lands at every moment of this one.
TEST_F(SavingChanges, MergesAgainWhereAnotherSaveLandsInBetween) {
  for (const bool all : {false, true}) {
    std::size_t collisions = 0;
    for (std::size_t n = 1;; ++n) {
      writeAccounts({record("a"), record("b")});
      const auto store = AccountsManager::init();
      store->accountWithIdentifier("a")->setAccountPropertyForKey(1, "mine");
      FailingFileSystem files(platform().realFileSystem());
      platform().replaceFileSystem(files);
      files.callAt(n, [&] {
        platform().replaceFileSystem(platform().realFileSystem());
        elsewhere([](AccountsManager& other) {
          other.accountWithIdentifier("a")->setAccountPropertyForKey(2, "theirs");
          other.accountWithIdentifier("b")->setAccountPropertyForKey(2, "theirs");
        });
        platform().replaceFileSystem(files);
      });
      if (all) {
        EXPECT_TRUE(store->saveAllAccounts());
      } else {
        const SaveReceipt receipt = store->saveChanges();
        EXPECT_TRUE(receipt.isSaved);
        if (receipt.attempts > 1) ++collisions;
      }
      platform().replaceFileSystem(platform().realFileSystem());
      EXPECT_EQ(stored("a")["mine"], Value(1)) << n;
      if (files.operations() < n) break;
      EXPECT_EQ(stored("a")["theirs"], Value(2)) << n;
      EXPECT_EQ(stored("b")["theirs"], Value(2)) << n;
    }
    EXPECT_TRUE(all || collisions > 3) << collisions;
  }
}

TEST_F(SavingChanges, NeverTurnsWhatCouldNotBeReadIntoNothing) {
  writeAccounts({record("a")});
  const std::string bytes = test::readFile(accountsPath());
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  for (const auto error :
       {std::errc::io_error, std::errc::permission_denied, std::errc::too_many_files_open,
        std::errc::not_enough_memory, std::errc::operation_would_block}) {
    // Opening the folder, and reading the file.
    for (const std::size_t n : {1, 2}) {
      files.failAt(n, std::make_error_code(error));
      const auto store = AccountsManager::init();
      EXPECT_EQ(store->fileState().kind, Kind::Unreadable);
      EXPECT_EQ(store->fileState().error, error);
      EXPECT_EQ(store->count(), 0u);
      files.heal();
      store->insertAccount(BasicAccount::initWithProperties(record("b")));
      EXPECT_FALSE(store->saveAllAccounts());
      const SaveReceipt receipt = store->saveChanges();
      EXPECT_FALSE(receipt.isSaved);
      EXPECT_EQ(receipt.failure.error, error);
      EXPECT_NE(receipt.failure.text().find(std::make_error_code(error).message()),
                std::string::npos);

      const auto whole = AccountsManager::init();
      whole->insertAccount(BasicAccount::initWithProperties(record("b")));
      files.failAt(n, std::make_error_code(error));
      const SaveReceipt unread = whole->saveChanges();
      EXPECT_FALSE(unread.isSaved);
      EXPECT_TRUE(unread.takenOver.empty());
      files.failAt(n, std::make_error_code(error));
      EXPECT_FALSE(whole->saveAllAccounts());
      EXPECT_EQ(whole->saveFailure().error, error);
      EXPECT_EQ(test::readFile(accountsPath()), bytes);
      files.heal();
    }
  }
}

TEST_F(SavingChanges, TellsWhatTheFileIs) {
  EXPECT_EQ(AccountsManager::stateOfAccountsFile().kind, Kind::Missing);
  writeAccounts({record("a")}, 7);
  EXPECT_EQ(AccountsManager::stateOfAccountsFile().kind, Kind::Whole);
  EXPECT_EQ(AccountsManager::init()->fileState().version, 7u);
  for (const char* bytes : {"", "no property list", "<plist><array/></plist>",
                            "<plist><dict><key>Accounts</key><string/></dict></plist>"}) {
    test::writeFile(accountsPath(), bytes);
    const AccountsFileState state = AccountsManager::stateOfAccountsFile();
    EXPECT_EQ(state.kind, Kind::Malformed) << bytes;
    EXPECT_FALSE(state.reason.empty());
  }
  std::filesystem::remove(accountsPath());
  std::filesystem::create_directory(accountsPath());
  const AccountsFileState state = AccountsManager::stateOfAccountsFile();
  EXPECT_EQ(state.kind, Kind::Unreadable);
  EXPECT_EQ(state.error, std::errc::is_a_directory);
  EXPECT_FALSE(AccountsManager::initWithAccounsInfoArray(nullptr)->saveChanges().isSaved);
}

}  // namespace
}  // namespace tallbook
