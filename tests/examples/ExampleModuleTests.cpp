#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>

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
    fs::create_symlink(MODULE, root / "example.so");
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

// Its class stands in the library itself, which the new device finds where it expects it.
TEST(ANewDevice, HasADeviceLocalAccount) {
  std::string name = (fs::temp_directory_path() / "tallbook-device-XXXXXX").string();
  ASSERT_NE(::mkdtemp(name.data()), nullptr);
  ASSERT_EQ(std::system((TOOL " init " + name + " >/dev/null").c_str()), 0);
  configureHost({name, HostOptions::Log::Nowhere});
  const auto store = AccountsManager::init();
  EXPECT_EQ(store->fullDeviceLocalAccount()->identifier(), "DeviceLocalAccount");
  EXPECT_TRUE(store->saveAllAccounts());
  fs::remove_all(name);
}

}  // namespace
