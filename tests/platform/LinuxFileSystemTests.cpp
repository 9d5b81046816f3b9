#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/LinuxDirectories.h"
#include "platform/linux/LinuxFileSystem.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

namespace fs = std::filesystem;
using std::errc;

struct stat statusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return status;
}

unsigned modeOf(const std::string& path) {
  return statusOf(path).st_mode & 07777;
}

/// Lives as a user whom permission bits bind.
class AsAnOrdinaryUser {
 public:
  AsAnOrdinaryUser() {
    if (::getuid() == 0 && ::seteuid(65534) != 0) throw std::runtime_error("still privileged");
  }
  ~AsAnOrdinaryUser() {
    if (::getuid() == 0 && ::seteuid(0) != 0) std::abort();
  }
};

class TheKernelsFiles : public ThrowAwayDevice {
 protected:
  LinuxFileSystem files{root()};
};

TEST_F(TheKernelsFiles, GetTheirPermissionBitsWhateverTheMask) {
  const mode_t before = ::umask(0077);
  EXPECT_FALSE(files.createDirectories(path("/a/b"), 0777));
  ::umask(0);
  EXPECT_FALSE(files.createFile(path("/a/file"), "secret"));
  ::umask(before);
  EXPECT_EQ(modeOf(path("/a")), 0777U);
  EXPECT_EQ(modeOf(path("/a/b")), 0777U);
  EXPECT_EQ(modeOf(path("/a/file")), 0600U);
}

TEST_F(TheKernelsFiles, AreNeverMadeOrGivenAwayThroughALink) {
  test::writeFile(path("/victim"), "mine");
  fs::create_symlink("victim", path("/link"));
  fs::create_symlink("nowhere", path("/dangling"));
  EXPECT_EQ(files.createFile(path("/link"), "x"), errc::file_exists);
  EXPECT_EQ(files.createFile(path("/dangling"), "x"), errc::file_exists);
  EXPECT_EQ(files.copyFile(path("/victim"), path("/dangling")), errc::file_exists);
  EXPECT_TRUE(files.exists(path("/dangling")));
  EXPECT_FALSE(files.exists(path("/nowhere")));

  test::writeFile(path("/etc/passwd"), "mobile:x:54321:54321::/var/mobile:/bin/false\n");
  const std::error_code given = files.setOwner(path("/link"), "mobile", "mobile");
  EXPECT_EQ(given,
            ::geteuid() == 0 ? std::error_code() : make_error_code(errc::operation_not_permitted));
  EXPECT_EQ(statusOf(path("/victim")).st_uid, ::getuid());
  EXPECT_EQ(statusOf(path("/link")).st_uid, given ? ::getuid() : 54321U);

  EXPECT_FALSE(files.remove(path("/link")));
  EXPECT_EQ(test::readFile(path("/victim")), "mine");
}

TEST_F(TheKernelsFiles, AreReadOnlyWhereTheyAreRegular) {
  ASSERT_EQ(::mkfifo(path("/pipe").c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", path("/zero"));
  test::writeFile(path("/sparse"), "");
  fs::resize_file(path("/sparse"), std::uintmax_t{1} << 40);
  for (const char* name : {"/pipe", "/zero", "/sparse"}) {
    std::error_code error;
    EXPECT_EQ(files.readFile(path(name), error), "");
    EXPECT_TRUE(error) << name;
  }
}

TEST_F(TheKernelsFiles, StayAsTheyWereInAReadOnlyFolder) {
  test::writeFile(path("/folder/old"), "old");
  fs::permissions(root(), fs::perms(0755));
  fs::permissions(path("/folder"), fs::perms(0555));
  {
    const AsAnOrdinaryUser user;
    EXPECT_EQ(files.createFile(path("/folder/new"), "x"), errc::permission_denied);
    EXPECT_EQ(files.remove(path("/folder/old")), errc::permission_denied);
    EXPECT_EQ(files.rename(path("/folder/old"), path("/folder/new")), errc::permission_denied);
    EXPECT_EQ(files.createDirectories(path("/folder/sub"), 0755), errc::permission_denied);
    EXPECT_EQ(files.temporaryPathIn(path("/folder")), std::nullopt);
  }
  fs::permissions(path("/folder"), fs::perms(0755));
  EXPECT_EQ(test::namesIn(path("/folder")), std::vector<std::string>{"old"});
}

TEST_F(TheKernelsFiles, LeaveNothingBehindWhenTheDiskTakesOnlyAPart) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = ::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{4096, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::error_code error = files.createFile(path("/tmp/large"), std::string(10'000, 'x'));
  ::setrlimit(RLIMIT_FSIZE, &before);
  ::signal(SIGXFSZ, handler);
  EXPECT_EQ(error, errc::file_too_large);
  EXPECT_TRUE(test::namesIn(path("/tmp")).empty());
}

TEST_F(TheKernelsFiles, DoNotMoveToAnotherFileSystem) {
  const std::string other = "/dev/shm/tallbook-" + std::to_string(::getpid());
  struct stat shared {};
  if (::stat("/dev/shm", &shared) != 0 || shared.st_dev == statusOf(root()).st_dev) {
    GTEST_SKIP() << "the device's folder and /dev/shm are on one file system";
  }
  if (::access("/dev/shm", W_OK | X_OK) != 0) GTEST_SKIP() << "needs a writable /dev/shm";
  ASSERT_FALSE(files.createFile(other, "new"));
  test::writeFile(accountsPath(), "old");
  EXPECT_EQ(files.rename(other, accountsPath()), errc::cross_device_link);
  EXPECT_EQ(test::readFile(accountsPath()), "old");
  EXPECT_FALSE(files.remove(other));
  EXPECT_EQ(fs::path(LinuxDirectories(root()).temporary()), fs::path(accountsPath()).parent_path());
}

TEST_F(TheKernelsFiles, BelongToTheAccountsOfTheirDevice) {
  const AccountDatabase accounts(root());
  test::writeFile(path("/etc/passwd"),
                  "root:x:0:0::/:/bin/sh\nbroken\nmobilephone:x:7:7:::\nodd:x:9x:9::/:\n"
                  "mobile:x:501:502::/home/m:/bin/sh\nmobile:x:1:1::/:/bin/sh");
  test::writeFile(path("/etc/group"), "staff:x:5:mobile\nmobile:x:503:");
  EXPECT_EQ(accounts.userNamed("mobile"), 501U);
  EXPECT_EQ(accounts.groupNamed("mobile"), 503U);
  EXPECT_EQ(accounts.homeOf("mobile"), "/home/m");
  for (const char* name : {"broken", "odd", "mob", ""}) {
    EXPECT_EQ(accounts.userNamed(name), std::nullopt) << name;
  }
  const AccountDatabase system("");
  EXPECT_EQ(system.userNamed("root"), 0U);
  EXPECT_EQ(system.groupNamed("root"), 0U);
  EXPECT_EQ(system.userNamed("nobody-has-this-name"), std::nullopt);
}

}  // namespace
}  // namespace tallbook
