// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/UnknownOwner.h"
#include "platform/linux/LinuxFileSystem.h"
#include "tests/support/ChildProcess.h"
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
  bool exists(const std::string& below) const {
    std::error_code error;
    return files.exists(path(below), error);
  }

  DeviceRoot device{root()};
  LinuxFileSystem files{device};
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
  EXPECT_TRUE(exists("/dangling"));
  EXPECT_FALSE(exists("/nowhere"));

  EXPECT_FALSE(files.remove(path("/link")));
  EXPECT_EQ(test::readFile(path("/victim")), "mine");
}

TEST_F(TheKernelsFiles, AreGivenAwayByWhatWasMadeNotByItsName) {
  test::writeFile(path("/etc/passwd"), "mobile:x:54321:54321::/var/mobile:/bin/false\n");
  test::writeFile(path("/victim"), "mine");
  std::error_code error;
  const auto folder = files.openFolder(root(), error);
  const auto file = folder->create("new", error);
  ASSERT_TRUE(file);
  fs::rename(path("/new"), path("/taken"));
  fs::rename(path("/victim"), path("/new"));
  error = file->giveTo("mobile", "mobile");
  EXPECT_EQ(error,
            ::geteuid() == 0 ? std::error_code() : make_error_code(errc::operation_not_permitted));
  EXPECT_EQ(statusOf(path("/new")).st_uid, ::getuid());
  EXPECT_EQ(statusOf(path("/taken")).st_uid, error ? ::getuid() : 54321U);
}

TEST_F(TheKernelsFiles, AreWaitedForWhereAnotherProgramHasALease) {
  test::writeFile(path("/leased"), "content");
  test::ChildProcess holder([&](test::ChildProcess::Parent& parent) {
    // Told that somebody wants to read, the holder gives its lease up.
    static int descriptor;
    descriptor = ::open(path("/leased").c_str(), O_WRONLY);
    ::signal(SIGIO, [](int) { ::fcntl(descriptor, F_SETLEASE, F_UNLCK); });
    if (::fcntl(descriptor, F_SETLEASE, F_WRLCK) != 0) return false;
    parent.say('l');
    while (parent.hear() != 'e') {
    }
    return true;
  });
  if (holder.hear() != 'l') GTEST_SKIP() << "leases are not possible here";
  std::error_code error;
  EXPECT_EQ(files.readFile(path("/leased"), error), "content") << error.message();
  EXPECT_EQ(files.openFolder(root(), error)->read("leased").bytes, "content");
  holder.say('e');
  EXPECT_EQ(holder.wait(), 0);
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
    EXPECT_EQ(files.replaceFile(path("/folder/old"), "x"), errc::permission_denied);
    EXPECT_EQ(files.createDirectories(path("/folder/sub"), 0755), errc::permission_denied);
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

// Links that lead out of a tree lead to the same place below its root, as they would on the device.
TEST_F(TheKernelsFiles, LieBelowTheRootWhateverLinksSay) {
  const std::string outside = root() + "-outside";
  fs::create_directories(outside + "/folder");
  fs::create_directory(path("/folder"));
  fs::create_symlink(outside + "/folder", path("/absolute"));
  fs::create_symlink("../../../.." + outside + "/folder", path("/climbing"));
  fs::create_symlink("/folder", path("/inside"));
  fs::create_symlink("loop", path("/loop"));
  std::error_code error;
  const FileDescriptor top = FileDescriptor::open(root(), O_PATH | O_DIRECTORY, 0, error);
  for (const auto open : {&openConfined, &openByWalking}) {
    for (const char* name : {"/absolute", "/climbing"}) {
      EXPECT_FALSE(open(top, name, O_RDONLY | O_DIRECTORY, 0, error)) << name;
      EXPECT_EQ(error, errc::no_such_file_or_directory) << name;
    }
    for (const char* name : {"/", "/..", "/inside/..", "."}) {
      const auto itself = open(top, name, O_RDONLY | O_DIRECTORY, 0, error);
      EXPECT_EQ(DeviceRoot::placeOf(itself), fs::canonical(root()).string()) << name;
    }
    const auto inside = open(top, "/../inside/./../inside", O_RDONLY | O_DIRECTORY, 0, error);
    EXPECT_EQ(DeviceRoot::placeOf(inside), fs::canonical(path("/folder")).string());
    EXPECT_FALSE(open(top, "/loop/x", O_RDONLY, 0, error));
    EXPECT_EQ(error, errc::too_many_symbolic_link_levels);
    EXPECT_TRUE(open(top, "/inside/made", O_WRONLY | O_CREAT | O_EXCL, 0600, error)) << error;
    EXPECT_TRUE(fs::remove(path("/folder/made")));
    EXPECT_FALSE(open(top, "/absolute", O_WRONLY | O_CREAT | O_EXCL, 0600, error));
    EXPECT_EQ(error, errc::file_exists);
  }
  EXPECT_EQ(files.createFile(path("/absolute/x"), "1"), errc::no_such_file_or_directory);
  EXPECT_EQ(files.createDirectories(path("/climbing/x"), 0755), errc::no_such_file_or_directory);
  EXPECT_EQ(files.createFile(outside + "/x", "1"), errc::operation_not_permitted);
  EXPECT_TRUE(fs::is_empty(outside + "/folder"));
  fs::remove_all(outside);
}

TEST_F(TheKernelsFiles, BelongToTheAccountsOfTheirDevice) {
  std::error_code error;
  const AccountDatabase accounts(device);
  test::writeFile(path("/etc/passwd"),
                  "root:x:0:0::/:/bin/sh\nbroken\nmobilephone:x:7:7:::\nodd:x:9x:9::/:\n"
                  "mobile:x:501:502::/home/m:/bin/sh\nmobile:x:1:1::/:/bin/sh");
  test::writeFile(path("/etc/group"), "staff:x:5:mobile\nmobile:x:503:");
  EXPECT_EQ(accounts.userNamed("mobile", error), 501U);
  EXPECT_EQ(accounts.groupNamed("mobile", error), 503U);
  EXPECT_EQ(accounts.homeOf("mobile", error), "/home/m");
  for (const char* name : {"broken", "odd", "mob", ""}) {
    EXPECT_EQ(accounts.userNamed(name, error), std::nullopt) << name;
    EXPECT_EQ(error, unknownAccount());
  }
  // An entry of any length.
  std::string members(5000, 'm');
  for (std::size_t end = 9; end < members.size(); end += 10) members[end] = ',';
  test::writeFile(path("/etc/group"), "many:x:7:" + members + "\nmobile:x:503:" + members);
  EXPECT_EQ(accounts.groupNamed("mobile", error), 503U) << error;
  fs::remove(path("/etc/group"));
  EXPECT_EQ(accounts.groupNamed("mobile", error), std::nullopt);
  EXPECT_EQ(error, unknownGroup());
  fs::create_directory(path("/etc/group"));
  EXPECT_EQ(accounts.groupNamed("mobile", error), std::nullopt);
  EXPECT_EQ(error, errc::is_a_directory) << "an error is no absence";

  const DeviceRoot running("");
  const AccountDatabase system(running);
  EXPECT_EQ(system.userNamed("root", error), 0U);
  EXPECT_EQ(system.groupNamed("root", error), 0U);
  EXPECT_EQ(system.userNamed("nobody-has-this-name", error), std::nullopt);
  EXPECT_EQ(error, unknownAccount());
}

}  // namespace
}  // namespace tallbook
