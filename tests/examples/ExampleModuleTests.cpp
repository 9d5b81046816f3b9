// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

#include "tallbook/AccountsManager.h"
#include "tallbook/Host.h"
#include "tallbook/Vocabulary.h"

namespace {

using namespace tallbook;
namespace fs = std::filesystem;

class TheExampleModule : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "tallbook-examples-XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    folder = name;
    const fs::path root = folder / "device";
    ASSERT_EQ(std::system((TOOL " init " + root.string() + " >/dev/null").c_str()), 0);
    ASSERT_EQ(std::system((FURNISH " " + root.string() + " example.so").c_str()), 0);
    fs::copy_file(MODULE, root / "example.so");
    configureHost({root.string(), HostOptions::Log::Nowhere});
    store = AccountsManager::init();
  }
  void TearDown() override { fs::remove_all(folder); }

  fs::path folder;
  std::shared_ptr<AccountsManager> store;
};

TEST_F(TheExampleModule, MakesFullAccounts) {
  const auto full = store->fullAccountWithIdentifierLoader("WORK", nullptr);
  int result = -1;
  full->renewAccountCredentialsWithHandler([&](int code) { result = code; });
  EXPECT_EQ(result, 0) << "a plain record answers 3";
  EXPECT_EQ(full->displayName(), "Work");
  EXPECT_NE(full, store->accountWithIdentifier("WORK"));
}

TEST_F(TheExampleModule, RefreshesWhatIsTurnedOn) {
  const auto account = store->accountWithIdentifier("WORK");
  EXPECT_TRUE(account->refreshContainersForDataclass("com.orvane.Dataclass.Mail"));
  EXPECT_TRUE(
      account->refreshContainerWithIdentifierForDataclass("x", "com.orvane.Dataclass.Mail"));
  EXPECT_FALSE(account->refreshContainerListForDataclass("com.orvane.Dataclass.Notes"));
}

TEST_F(TheExampleModule, MayHoldUpAMigration) {
  const auto lock = AccountsManager::createAndLockMigrationLock();
  ASSERT_TRUE(lock);
  const std::string held =
      "flock --nonblock " + (folder / "device").string() + kAccountMigrationLockFilename + " true";
  EXPECT_NE(std::system(held.c_str()), 0);
  AccountsManager::releaseMigrationLock(lock);
  EXPECT_EQ(std::system(held.c_str()), 0);
}

// Its class stands in the library itself, wherever that was built or moved to.
TEST(TheRunningSystem, HasADeviceLocalAccount) {
  configureHost({"", HostOptions::Log::Nowhere});
  const auto store = AccountsManager::initWithAccounsInfoArray(nullptr);
  EXPECT_EQ(store->fullDeviceLocalAccount()->identifier(), "DeviceLocalAccount");
}

// A device of an earlier release names the library by its place, and may bring one of its own.
TEST(ANewDevice, HasADeviceLocalAccountFromTheRunningLibrary) {
  std::string name = (fs::temp_directory_path() / "tallbook-device-XXXXXX").string();
  ASSERT_NE(::mkdtemp(name.data()), nullptr);
  ASSERT_EQ(std::system((TOOL " init " + name + " >/dev/null").c_str()), 0);
  const std::string place = "/usr/lib/" + fs::path(LIBRARY).filename().string();
  fs::create_directories(name + "/usr/lib");
  fs::copy_file(LIBRARY, name + place);
  std::ofstream(name + "/usr/share/tallbook/AccountCreators.plist")
      << "<plist><dict><key>OnMyDevice</key><array><dict><key>Type</key><string>FullAccount</"
         "string>"
         "<key>Description</key><dict><key>Framework</key><string>"
      << place
      << "</string><key>Class</key><string>DeviceLocalAccount</string></dict></dict></array></dict>"
         "</plist>";
  configureHost({name, HostOptions::Log::Nowhere});
  const auto store = AccountsManager::init();
  EXPECT_EQ(store->fullDeviceLocalAccount()->identifier(), "DeviceLocalAccount");
  EXPECT_TRUE(store->saveAllAccounts());
  std::ifstream maps("/proc/self/maps");
  const std::string loaded{std::istreambuf_iterator<char>(maps), {}};
  EXPECT_EQ(loaded.find(name), std::string::npos) << "a second copy of the library is loaded";
  fs::remove_all(name);
}

}  // namespace
