#include <filesystem>

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
    store = AccountsManager::init();
    store->accountWithIdentifier("a")->setDisplayName("changed");
  }

  void expectNothingLost() {
    EXPECT_EQ(test::readFile(accountsPath()), bytesBefore);
    EXPECT_EQ(test::namesIn(preferencesFolder()),
              std::vector<std::string>{"com.orvane.tallbook.plist"});
    EXPECT_TRUE(heard().empty());
    EXPECT_TRUE(logContains("\"Failed to save accounts to filesystem.\""));
  }
  void expectTheNextSaveToBeWhole() {
    EXPECT_TRUE(store->saveAllAccounts());
    EXPECT_EQ((*stored("a"))["DisplayName"], Value("changed"));
    EXPECT_EQ(heard(), std::vector<std::string>{"1 a [\"com.orvane.Dataclass.Mail\"]"});
    EXPECT_EQ(test::namesIn(preferencesFolder()),
              std::vector<std::string>{"com.orvane.tallbook.plist"});
  }

  std::string bytesBefore;
  std::shared_ptr<AccountsManager> store;
};

// Temporary path, write, ownership, rename; the flush of the folder comes when all is done.
constexpr std::size_t kFailingSteps = 4;

TEST_F(AFailedSave, LosesNothingWhicheverStepFails) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  for (std::size_t step = 1; step <= kFailingSteps; ++step) {
    platform().log.lines.clear();
    files.heal();
    files.failAt(step, std::make_error_code(std::errc::no_space_on_device));
    EXPECT_FALSE(store->saveAllAccounts()) << step;
    expectNothingLost();
    EXPECT_EQ(logContains("Could not set attributes on the temporary tallbook plist. "), step == 3);
  }
  files.heal();
  expectTheNextSaveToBeWhole();
  EXPECT_EQ(files.operations(), kFailingSteps + 1);
}

TEST_F(AFailedSave, IsASaveWhenOnlyTheFolderCouldNotBeFlushed) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  files.failAt(kFailingSteps + 1, std::make_error_code(std::errc::io_error));
  expectTheNextSaveToBeWhole();
  EXPECT_TRUE(logContains("Could not flush the folder of the accounts file. "));
}

TEST_F(AFailedSave, LeavesAWholeFileWhereverTheProcessEnds) {
  for (std::size_t step = 1; step <= kFailingSteps + 1; ++step) {
    test::writeFile(accountsPath(), bytesBefore);
    const auto dying = AccountsManager::init();
    dying->accountWithIdentifier("a")->setDisplayName("changed");
    FailingFileSystem files(platform().realFileSystem());
    platform().replaceFileSystem(files);
    files.stopAt(step);
    EXPECT_THROW(dying->saveAllAccounts(), Stopped) << step;
    platform().replaceFileSystem(platform().realFileSystem());
    const auto next = AccountsManager::init();
    ASSERT_EQ(next->count(), 1u) << step;
    EXPECT_EQ(next->accountWithIdentifier("a")->displayName() == "changed", step > kFailingSteps);
  }
}

TEST_F(AFailedSave, FollowsFromTheSystemsOwnErrors) {
  const std::string accounts = test::readFile(path("/etc/passwd"));
  platform().scriptedDirectories.temporaryDirectory = path("/nowhere");
  EXPECT_FALSE(store->saveAllAccounts());
  expectNothingLost();
  platform().scriptedDirectories.temporaryDirectory.reset();
  test::writeFile(path("/etc/passwd"), "");
  EXPECT_FALSE(store->saveAllAccounts());
  expectNothingLost();
  EXPECT_TRUE(logContains("Could not set attributes on the temporary tallbook plist. "));
  test::writeFile(path("/etc/passwd"), accounts);
  store->accountWithIdentifier("a")->setAccountPropertyForKey("\xff", "no text");
  EXPECT_FALSE(store->saveAllAccounts());
  expectNothingLost();
  EXPECT_TRUE(logContains("Failed to serialize tallbook data: "));
  store->accountWithIdentifier("a")->removeAccountPropertyForKey("no text");
  expectTheNextSaveToBeWhole();
}

TEST_F(AFailedSave, FollowsFromATemporaryFolderOnAnotherFileSystem) {
  namespace fs = std::filesystem;
  const std::string elsewhere = "/dev/shm/tallbook-" + fs::path(root()).filename().string();
  std::error_code error;
  if (!fs::create_directory(elsewhere, error)) GTEST_SKIP() << "needs a writable /dev/shm";
  platform().scriptedDirectories.temporaryDirectory = elsewhere;
  const bool saved = store->saveAllAccounts();
  const bool isEmpty = fs::is_empty(elsewhere);
  fs::remove_all(elsewhere);
  if (saved) GTEST_SKIP() << "/dev/shm is on the file system of the temporary folder";
  EXPECT_TRUE(isEmpty);
  expectNothingLost();
  platform().scriptedDirectories.temporaryDirectory.reset();
  expectTheNextSaveToBeWhole();
}

}  // namespace
}  // namespace tallbook
