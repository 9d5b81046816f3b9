// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/BaselineFile.h"

#include <cerrno>
#include <cstdio>
#include <optional>
#include <system_error>
// A file that nobody else can read at any moment, flushed before it counts.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "tallbook/PropertyList.h"

#include "tools/common/FileBytes.h"
#include "tools/common/Outcome.h"

namespace tallbook::tool {
namespace {

bool write(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return ::fsync(file) == 0;
}

}  // namespace

std::unique_ptr<AccountsWatcher> watcherSince(const std::string& path) {
  std::error_code error;
  const std::string bytes = bytesOfFile(path, error);
  if (error == std::errc::no_such_file_or_directory) return nullptr;
  if (error) {
    throw Failure(ExitCode::Unreadable,
                  path + " cannot be read: " + error.message() + "; " + adviceOnUnreadable(error));
  }
  const std::optional<Value> baseline = propertyListFromBytes(bytes);
  auto watcher = baseline ? AccountsWatcher::since(*baseline) : nullptr;
  if (watcher) return watcher;
  throw Failure(ExitCode::Unreadable,
                path + " is no baseline, and left as it is; name a file that is one, or a new one");
}

void keepBaseline(const AccountsWatcher& watcher, const std::string& path) {
  const std::optional<std::string> bytes = binaryPropertyList(watcher.baseline());
  if (!bytes) throw Failure(ExitCode::NotSaved, "the baseline cannot be written");
  std::string made = path + ".XXXXXX";
  const int file = ::mkostemp(made.data(), O_CLOEXEC);
  const bool isWritten = file >= 0 && write(file, *bytes);
  const bool isKept = isWritten && std::rename(made.c_str(), path.c_str()) == 0;
  const std::error_code error(errno, std::generic_category());
  if (file >= 0) ::close(file);
  if (isKept) return;
  if (file >= 0) std::remove(made.c_str());
  throw Failure(ExitCode::NotSaved,
                "the baseline cannot be kept as " + path + ": " + error.message());
}

}  // namespace tallbook::tool
