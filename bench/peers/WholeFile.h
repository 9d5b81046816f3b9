// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "bench/peers/Peer.h"

namespace tallbook::peers {

/// The file's bytes, which stay to the end of the process.
inline std::string_view readFile(const char* name) {
  const int file = open(name, O_RDONLY | O_CLOEXEC);
  struct stat facts {};
  if (file < 0 || fstat(file, &facts) != 0) fail("cannot open the file");
  const auto size = static_cast<std::size_t>(facts.st_size);
  auto* bytes = static_cast<char*>(std::malloc(size));
  if (::read(file, bytes, size) != facts.st_size || close(file) != 0) fail("cannot read the file");
  return {bytes, size};
}

/// Replaces a file of the folder so that it survives a loss of power: write, flush, rename, flush
/// of the folder, and nothing else. Whether it could.
[[nodiscard]] inline bool replaceFile(const char* folder, const char* name,
                                      std::string_view bytes) {
  constexpr const char* kWritten = "written";
  const int entries = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int file = openat(entries, kWritten, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  return file >= 0 &&
         write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
         fsync(file) == 0 && close(file) == 0 && renameat(entries, kWritten, entries, name) == 0 &&
         fsync(entries) == 0 && close(entries) == 0;
}

}  // namespace tallbook::peers
