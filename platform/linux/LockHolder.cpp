// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LockHolder.h"

// Without the standard library's streams: each of their classes would be looked up at the start of
// every program that has this library.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>

namespace tallbook {
namespace {

/// The file as /proc/locks names it: "08:01:1234", the device in hexadecimal.
std::string nameInTable(const struct stat& status) {
  char name[64];
  std::snprintf(name, sizeof name, "%02x:%02x:%llu", major(status.st_dev), minor(status.st_dev),
                static_cast<unsigned long long>(status.st_ino));
  return name;
}

/// A line is "1: FLOCK  ADVISORY  WRITE 4711 08:01:1234 0 EOF"; that of a process which waits has
/// "->" after the number, and so another second word.
std::optional<long> holderInTable(const std::string& table, const std::string& file) {
  for (std::size_t at = 0; at < table.size();
       at = std::min(table.find('\n', at), table.size()) + 1) {
    long process = 0;
    char place[64] = "";
    const int words =
        std::sscanf(table.c_str() + at, "%*s FLOCK %*s %*s %ld %63s", &process, place);
    // Processes outside the container have the number 0, or -1.
    if (words == 2 && place == file && process > 0) return process;
  }
  return std::nullopt;
}

/// What a file of the kernel's says; empty where it says nothing.
std::string textOf(const std::string& path) {
  std::error_code error;
  const FileDescriptor file = FileDescriptor::open(path, O_RDONLY, 0, error);
  return file ? readRegularFile(file, error) : std::string();
}

/// A long table is told in several reads, and a lock that goes between two of them makes the next
/// line be left out: whoever is not found is looked for again, after a moment in which others move
/// on, since the same ones would be at the same point again.
std::optional<long> holderOf(const std::string& file) {
  constexpr int kLooks = 20;
  constexpr std::chrono::milliseconds kMoment{1};
  for (int look = 1;; ++look) {
    const auto holder = holderInTable(textOf("/proc/locks"), file);
    if (holder || look == kLooks) return holder;
    std::this_thread::sleep_for(kMoment);
  }
}

}  // namespace

std::string holderOfLockOn(const FileDescriptor& file) {
  struct stat status {};
  const auto process =
      ::fstat(file.get(), &status) == 0 ? holderOf(nameInTable(status)) : std::nullopt;
  if (!process) return "a process that the kernel does not name";
  const std::string text = "process " + std::to_string(*process);
  const std::string program = textOf("/proc/" + std::to_string(*process) + "/comm");
  return program.empty() ? text : text + " (" + program.substr(0, program.find('\n')) + ")";
}

}  // namespace tallbook
