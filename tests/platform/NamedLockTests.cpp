// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "platform/linux/LinuxNamedLock.h"
#include "platform/linux/LockHolder.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

namespace fs = std::filesystem;
using test::ChildProcess;

/// How a holder is called that is this process.
std::string thisProcess() {
  std::string program = test::readFile("/proc/self/comm");
  program.pop_back();
  return "process " + std::to_string(::getpid()) + " (" + program + ")";
}

class ANamedLock : public ThrowAwayDevice {
 protected:
  /// Looks at the lock's file from outside.
  bool isHeld() const {
    const int file = ::open(lockPath.c_str(), O_RDONLY | O_CLOEXEC);
    const bool held = file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) != 0;
    ::close(file);
    return held;
  }

  const std::string lockPath = path("/tmp/InProgress");
  const DeviceRoot device{root()};
  LinuxNamedLock files{device};
  NamedLock& locks = files;
};

TEST_F(ANamedLock, IsHeldExactlyAsLongAsItsHold) {
  auto hold = locks.lock("InProgress");
  ASSERT_TRUE(hold);
  EXPECT_TRUE(isHeld());
  // A process forked meanwhile keeps the file open, not the lock.
  ChildProcess bystander([](ChildProcess::Parent& parent) {
    parent.say('h');
    return parent.hear() == 'q';
  });
  ASSERT_EQ(bystander.hear(), 'h');
  hold->release();
  EXPECT_FALSE(isHeld());
  const auto next = locks.lock("InProgress");
  hold->release();
  hold.reset();
  EXPECT_TRUE(isHeld()) << "an ended hold ends no other one";
  bystander.say('q');
  EXPECT_EQ(bystander.wait(), 0);
}

TEST_F(ANamedLock, EndsWithAHolderThatIsKilled) {
  ChildProcess holder([this](ChildProcess::Parent& parent) {
    const auto hold = locks.lock("InProgress");
    parent.say(hold ? 'h' : 'n');
    return parent.hear() == 'q';
  });
  ASSERT_EQ(holder.hear(), 'h');
  EXPECT_TRUE(isHeld());
  holder.kill();
  EXPECT_TRUE(locks.lock("InProgress"));
}

// Each process counts on in a file that it reads and writes in two steps: two holders at once lose
// counts. Every third time one removes the lock's file, like somebody who empties the folder.
TEST_F(ANamedLock, HasOneHolderAtATimeEvenWhenItsFileIsRemoved) {
  constexpr int kProcesses = 4;
  constexpr int kRounds = 150;
  const std::string counter = path("/counter");
  test::writeFile(counter, "0");
  const auto countOn = [&](ChildProcess::Parent& parent) {
    parent.hear();
    for (int round = 0; round < kRounds; ++round) {
      const auto hold = locks.lock("InProgress");
      if (!hold) return false;
      test::writeFile(counter, std::to_string(std::stoi(test::readFile(counter)) + 1));
      if (round % 3 == 0) fs::remove(lockPath);
    }
    return true;
  };
  std::vector<std::unique_ptr<ChildProcess>> processes;
  for (int i = 0; i < kProcesses; ++i) {
    processes.push_back(std::make_unique<ChildProcess>(countOn));
  }
  for (const auto& process : processes) process->say('g');
  for (const auto& process : processes) EXPECT_EQ(process->wait(), 0);
  EXPECT_EQ(test::readFile(counter), std::to_string(kProcesses * kRounds));
}

TEST_F(ANamedLock, TellsWhoeverWaitsLongOnceForWhom) {
  LinuxNamedLock withoutPatience(device, std::chrono::milliseconds(0));
  NamedLock& impatient = withoutPatience;
  std::vector<std::string> told;
  const auto hold = impatient.lock("InProgress", [&](auto holder) { told.emplace_back(holder); });
  EXPECT_THAT(told, ::testing::IsEmpty()) << "nobody held it";
  const auto soon = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
  EXPECT_FALSE(impatient.lock(
      "InProgress", [&](auto holder) { told.emplace_back(holder); }, soon));
  EXPECT_THAT(told, ::testing::ElementsAre(thisProcess())) << "once, however often it looked";
  ChildProcess waiter([&](ChildProcess::Parent& parent) {
    return impatient.lock("InProgress", [&](std::string_view holder) {
      test::writeFile(path("/told"), holder);
      parent.say('t');
    }) != nullptr;
  });
  EXPECT_EQ(waiter.hear(), 't');
  hold->release();
  EXPECT_EQ(waiter.hear(), 0);
  EXPECT_EQ(waiter.wait(), 0);
  EXPECT_EQ(test::readFile(path("/told")), thisProcess());
}

TEST_F(ANamedLock, NamesItsHolderWhileOtherLocksComeAndGo) {
  constexpr int kOthers = 3;
  std::vector<std::unique_ptr<ChildProcess>> others;
  for (int i = 0; i < kOthers; ++i) {
    others.push_back(std::make_unique<ChildProcess>([&, i](ChildProcess::Parent& parent) {
      parent.say('l');
      while (locks.lock("Other" + std::to_string(i))) {
      }
      return false;
    }));
    ASSERT_EQ(others.back()->hear(), 'l');
  }
  const auto hold = locks.lock("InProgress");
  std::error_code error;
  const FileDescriptor file = FileDescriptor::open(lockPath, O_RDONLY, 0, error);
  // The kernel's table comes in pieces, whose borders the more locks move over the holder's line.
  std::vector<std::unique_ptr<LockHold>> more;
  for (int number = 0; number < 100; ++number) {
    more.push_back(locks.lock("More" + std::to_string(number)));
    for (int round = 0; round < 20; ++round) ASSERT_EQ(holderOfLockOn(file), thisProcess());
  }
}

TEST_F(ANamedLock, CanBeTakenByEveryUser) {
  const mode_t before = ::umask(0077);
  EXPECT_TRUE(locks.lock("InProgress"));
  ::umask(before);
  EXPECT_EQ(fs::status(lockPath).permissions(), fs::perms(0444));
}

TEST_F(ANamedLock, RefusesWhatWasPlantedAtItsPath) {
  test::writeFile(path("/victim"), "mine");
  fs::create_symlink(path("/victim"), path("/tmp/link"));
  fs::create_symlink(path("/made-through-the-link"), path("/tmp/dangling"));
  fs::create_directory(path("/tmp/directory"));
  ASSERT_EQ(::mkfifo(path("/tmp/pipe").c_str(), 0666), 0);
  for (const char* name : {"link", "dangling", "directory", "pipe", "../victim", ""}) {
    EXPECT_FALSE(locks.lock(name)) << name;
  }
  EXPECT_FALSE(test::exists(path("/made-through-the-link")));
  fs::remove_all(path("/tmp"));
  EXPECT_FALSE(locks.lock("InProgress")) << "there is no folder for locks";
}

}  // namespace
}  // namespace tallbook
