// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/AccountDatabase.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <grp.h>
#include <memory>
#include <pwd.h>
#include <vector>

#include "platform/UnknownOwner.h"

namespace tallbook {
namespace {

// A database's place below a root, and the system's functions that read one entry of it.

struct Users {
  using Entry = passwd;
  static constexpr const char* kPath = "/etc/passwd";
  static constexpr auto kByName = ::getpwnam_r;
  static constexpr auto kNextOf = ::fgetpwent_r;
  static constexpr auto kName = &passwd::pw_name;
  static constexpr auto kUnknown = unknownAccount;
};

struct Groups {
  using Entry = group;
  static constexpr const char* kPath = "/etc/group";
  static constexpr auto kByName = ::getgrnam_r;
  static constexpr auto kNextOf = ::fgetgrent_r;
  static constexpr auto kName = &group::gr_name;
  static constexpr auto kUnknown = unknownGroup;
};

/// As the system's own look-up by name, but in the bytes of a database file.
template <class Database, class Entry>
int lookUpIn(std::string& file, const char* name, Entry* entry, std::vector<char>& buffer,
             Entry** found) {
  if (file.empty()) return ENOENT;
  const auto close = [](FILE* stream) { std::fclose(stream); };
  const std::unique_ptr<FILE, decltype(close)> lines(::fmemopen(file.data(), file.size(), "r"),
                                                     close);
  if (!lines) return errno;
  for (;;) {
    const int result = Database::kNextOf(lines.get(), entry, buffer.data(), buffer.size(), found);
    if (result != 0 || std::strcmp(entry->*Database::kName, name) == 0) return result;
  }
}

/// What look-ups answer for a name that is not there.
bool isAbsence(int result) {
  return result == 0 || result == ENOENT || result == ESRCH || result == EBADF || result == EPERM;
}

template <class Database, class Read>
auto entryNamed(const std::string& name, const DeviceRoot& root, std::error_code& error, Read read)
    -> std::optional<decltype(read(typename Database::Entry()))> {
  constexpr std::size_t kLargestEntry = std::size_t{1} << 20;
  const bool isRunningSystem = root.path().empty();
  error.clear();
  std::string file;
  if (!isRunningSystem) file = root.readFile(root.path() + Database::kPath, error);
  // A database that is not there knows nobody.
  if (error && error != std::errc::no_such_file_or_directory) return std::nullopt;
  std::vector<char> buffer(1024);
  for (;;) {
    typename Database::Entry entry{};
    typename Database::Entry* found = nullptr;
    const int result =
        isRunningSystem
            ? Database::kByName(name.c_str(), &entry, buffer.data(), buffer.size(), &found)
            : lookUpIn<Database>(file, name.c_str(), &entry, buffer, &found);
    if (result == ERANGE && buffer.size() < kLargestEntry) {
      buffer.resize(buffer.size() * 2);
    } else if (result != EINTR) {
      if (found) {
        error.clear();
        return read(*found);
      }
      error = isAbsence(result) ? Database::kUnknown()
                                : std::error_code(result, std::generic_category());
      return std::nullopt;
    }
  }
}

}  // namespace

std::optional<uid_t> AccountDatabase::userNamed(const std::string& name,
                                                std::error_code& error) const {
  return entryNamed<Users>(name, _root, error, [](const passwd& entry) { return entry.pw_uid; });
}

std::optional<gid_t> AccountDatabase::groupNamed(const std::string& name,
                                                 std::error_code& error) const {
  return entryNamed<Groups>(name, _root, error, [](const group& entry) { return entry.gr_gid; });
}

std::optional<std::string> AccountDatabase::homeOf(const std::string& name,
                                                   std::error_code& error) const {
  return entryNamed<Users>(name, _root, error,
                           [](const passwd& entry) { return std::string(entry.pw_dir); });
}

}  // namespace tallbook
