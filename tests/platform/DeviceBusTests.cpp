// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <chrono>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <vector>

#include "platform/linux/DeviceBus.h"
#include "platform/linux/LinuxPlatform.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

constexpr std::uint64_t kMicrosecondsToWait = 20'000'000;

/// A message bus inside the device. `runs` is false where the machine has no bus program.
class BusProgram {
 public:
  explicit BusProgram(const std::string& address) {
    int output[2];
    if (::pipe(output) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    std::string option = "--address=" + address;
    std::vector<std::string> words{"dbus-daemon", "--session",         "--nofork",
                                   "--nopidfile", "--print-address=1", option};
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    if (::posix_spawnp(&_pid, "dbus-daemon", &actions, nullptr, arguments.data(), environ) != 0) {
      _pid = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    // It prints its address once it listens.
    char first = 0;
    runs = _pid > 0 && ::read(output[0], &first, 1) == 1;
    ::close(output[0]);
  }
  ~BusProgram() {
    if (_pid <= 0) return;
    ::kill(_pid, SIGKILL);
    ::waitpid(_pid, nullptr, 0);
  }
  BusProgram(const BusProgram&) = delete;
  BusProgram& operator=(const BusProgram&) = delete;

  bool runs = false;

 private:
  pid_t _pid = -1;
};

using Heard = std::vector<std::string>;

int hear(sd_bus_message* message, void* heard, sd_bus_error*) {
  Heard& words = *static_cast<Heard*>(heard);
  words.emplace_back(sd_bus_message_get_member(message));
  const char* word = nullptr;
  while (sd_bus_message_read_basic(message, 's', &word) > 0) words.emplace_back(word);
  return 0;
}

class ADeviceBus : public ThrowAwayDevice {
 protected:
  ADeviceBus() { std::filesystem::create_directories(path("/run/dbus")); }

  const std::string socket = path("/run/dbus/system_bus_socket");
  const std::string busAddress = "unix:path=" + socket;
  const std::unique_ptr<Platform> device =
      makeLinuxPlatform({root(), LinuxPlatformOptions::LogSink::Nowhere});
};

TEST_F(ADeviceBus, CarriesNoticesToWhoeverListens) {
  const BusProgram program(busAddress);
  if (!program.runs) GTEST_SKIP() << "no dbus-daemon on this machine";
  sd_bus* listener = nullptr;
  ASSERT_GE(sd_bus_new(&listener), 0);
  ASSERT_GE(sd_bus_set_address(listener, busAddress.c_str()), 0);
  ASSERT_GE(sd_bus_set_bus_client(listener, 1), 0);
  ASSERT_GE(sd_bus_start(listener), 0);
  Heard heard;
  for (const char* interface : {"com.orvane.Preferences", "com.orvane.Bookmarks"}) {
    const std::string rule = std::string("type='signal',interface='") + interface + "'";
    ASSERT_GE(sd_bus_add_match(listener, nullptr, rule.c_str(), hear, &heard), 0);
  }

  device->preferences().postChangedNotice("com.orvane.quillpost", "MailAccounts");
  device->bookmarksLibrary().cloudTabsWereSwitchedOn();
  const Heard expected{"Changed", "com.orvane.quillpost", "MailAccounts", "CloudTabsSwitchedOn"};
  while (heard.size() < expected.size()) {
    const int progress = sd_bus_process(listener, nullptr);
    ASSERT_GE(progress, 0);
    if (progress == 0) {
      ASSERT_GT(sd_bus_wait(listener, kMicrosecondsToWait), 0) << "nothing came";
    }
  }
  EXPECT_EQ(heard, expected);
  sd_bus_flush_close_unref(listener);
}

// Without a root it is the machine's own bus, or where that has none, the user's.
TEST_F(ADeviceBus, IsThatOfTheRunningSystemOrOfItsUser) {
  const BusProgram program(busAddress);
  if (!program.runs) GTEST_SKIP() << "no dbus-daemon on this machine";
  const std::string nowhere = "unix:path=" + path("/none");
  const DeviceRoot runningSystem("");
  const auto emitted = [&](const std::string& ofSystem, const std::string& ofUser) {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ofSystem.c_str(), 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", ofUser.c_str(), 1);
    return DeviceBus(runningSystem).emit({"/a", "com.example.A", "Changed"}, {{"b"}});
  };
  EXPECT_TRUE(emitted(busAddress, nowhere));
  EXPECT_TRUE(emitted(nowhere, busAddress));
  EXPECT_FALSE(emitted(nowhere, nowhere));
  for (const char* variable : {"DBUS_SYSTEM_BUS_ADDRESS", "DBUS_SESSION_BUS_ADDRESS"}) {
    ::unsetenv(variable);
  }
}

TEST_F(ADeviceBus, NeverHoldsUpItsSender) {
  const int deaf = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(socket.size(), sizeof address.sun_path);
  std::memcpy(address.sun_path, socket.data(), socket.size());
  ASSERT_EQ(::bind(deaf, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(deaf, 1), 0);
  const auto before = std::chrono::steady_clock::now();
  device->preferences().postChangedNotice("com.orvane.quillpost", "MailAccounts");
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
  ::close(deaf);
}

}  // namespace
}  // namespace tallbook
