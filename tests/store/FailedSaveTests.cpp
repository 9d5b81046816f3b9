// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <set>

#include "tests/store/StoreDevice.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {

class AFailedSave : public StoreDevice {
 protected:
  void SetUp() override {
    writeAccounts(
        {record("a", {{"Enabled Dataclasses", Array::make({"com.orvane.Dataclass.Mail"})}})});
    bytesBefore = test::readFile(accountsPath());
    makeAChange();
  }
  void makeAChange() {
    store = AccountsManager::init();
    store->accountWithIdentifier("a")->setDisplayName("changed");
  }

  /// Nothing but, after a failed rename, the claim of the present version, which the next save
  /// passes over and removes.
  void expectNothingLost() {
    EXPECT_EQ(test::readFile(accountsPath()), bytesBefore);
    for (const std::string& name : namesBesideGenerations()) {
      EXPECT_TRUE(name == "com.orvane.tallbook.plist" || name.starts_with(".tallbook-claim-"));
    }
    EXPECT_TRUE(heard().empty());
    EXPECT_TRUE(logContains("\"Failed to save accounts to filesystem.\""));
  }
  void expectTheNextSaveToBeWhole() {
    EXPECT_TRUE(store->saveAllAccounts());
    EXPECT_EQ(stored("a")["DisplayName"], Value("changed"));
    EXPECT_EQ(heard(), std::vector<std::string>{"1 a [\"com.orvane.Dataclass.Mail\"]"});
    EXPECT_EQ(namesBesideGenerations(), std::vector<std::string>{"com.orvane.tallbook.plist"});
  }

  std::string bytesBefore;
  std::shared_ptr<AccountsManager> store;
};

/// The n-th operation of a save, as the test of the same number says.
std::size_t placeOf(const FailingFileSystem& files, const std::string& name) {
  const auto found = std::ranges::find(files.names(), name);
  return static_cast<std::size_t>(found - files.names().begin()) + 1;
}

TEST_F(AFailedSave, LosesNothingWhicheverStepFails) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  std::set<std::string> saved;
  std::set<std::string> notSaved;
  for (std::size_t step = 1;; ++step) {
    SCOPED_TRACE("operation " + std::to_string(step));
    test::writeFile(accountsPath(), bytesBefore);
    std::filesystem::remove_all(generationsFolder());
    files.heal();
    makeAChange();
    platform().log.lines.clear();
    heard().clear();
    files.failAt(step, std::make_error_code(std::errc::no_space_on_device));
    const bool isSaved = store->saveAllAccounts();
    if (files.operations() < step) break;
    const std::string failed = files.names().at(step - 1);
    (isSaved ? saved : notSaved).insert(failed);
    if (isSaved) {
      EXPECT_EQ(stored("a")["DisplayName"], Value("changed"));
      EXPECT_EQ(heard(), std::vector<std::string>{"1 a [\"com.orvane.Dataclass.Mail\"]"});
    } else {
      expectNothingLost();
      EXPECT_NE(store->saveFailure().text().find("No space left on device"), std::string::npos);
    }
    EXPECT_EQ(logContains("Could not set attributes on the temporary tallbook plist. "),
              failed == "giveTo");
    EXPECT_EQ(logContains("Could not flush the folder of the accounts file. "), failed == "flush");
    EXPECT_EQ(logContains("cannot keep the accounts file before as a generation: "),
              isSaved && failed != "flush" && failed != "remove");
  }
  EXPECT_EQ(notSaved, (std::set<std::string>{"openFolder", "read", "create", "write", "giveTo",
                                             "finish", "makeNote", "look", "rename"}));
  EXPECT_EQ(saved,
            (std::set<std::string>{"folder", "makeFolder", "link", "look", "flush", "remove"}));
}

TEST_F(AFailedSave, LeavesAWholeFileWhereverTheProcessEnds) {
  for (std::size_t step = 1;; ++step) {
    test::writeFile(accountsPath(), bytesBefore);
    const auto dying = AccountsManager::init();
    dying->accountWithIdentifier("a")->setDisplayName("changed");
    FailingFileSystem files(platform().realFileSystem());
    platform().replaceFileSystem(files);
    files.stopAt(step);
    bool isStopped = false;
    try {
      (void)dying->saveAllAccounts();
    } catch (const Stopped&) {
      isStopped = true;
    }
    platform().replaceFileSystem(platform().realFileSystem());
    const auto next = AccountsManager::init();
    ASSERT_EQ(next->count(), 1u) << step;
    EXPECT_EQ(next->accountWithIdentifier("a")->displayName() == "changed",
              step > placeOf(files, "rename"))
        << step;
    if (!isStopped) break;
  }
}

TEST_F(AFailedSave, FollowsFromTheSystemsOwnErrors) {
  const std::string accounts = test::readFile(path("/etc/passwd"));
  test::writeFile(path("/etc/passwd"), "");
  EXPECT_FALSE(store->saveAllAccounts());
  expectNothingLost();
  EXPECT_TRUE(logContains("Could not set attributes on the temporary tallbook plist. "));
  test::writeFile(path("/etc/passwd"), accounts);
  store->accountWithIdentifier("a")->setAccountPropertyForKey("\xff", "no text");
  EXPECT_FALSE(store->saveAllAccounts());
  expectNothingLost();
  EXPECT_TRUE(logContains("Failed to serialize tallbook data: "));
  EXPECT_THAT(store->saveFailure().text(), ::testing::HasSubstr("as a property list"));
  store->accountWithIdentifier("a")->removeAccountPropertyForKey("no text");
  expectTheNextSaveToBeWhole();
}

}  // namespace
}  // namespace tallbook
