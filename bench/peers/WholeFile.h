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

/// Replaces a file of the working directory so that it survives a loss of power: write, flush,
/// rename, flush of the folder, and nothing else.
inline void replaceFile(const char* name, std::string_view bytes) {
  constexpr const char* kWritten = "written";
  const int file = open(kWritten, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0 || write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) ||
      fsync(file) != 0 || close(file) != 0 || std::rename(kWritten, name) != 0) {
    fail("cannot write the file");
  }
  const int folder = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0 || fsync(folder) != 0 || close(folder) != 0) fail("cannot flush the folder");
}

}  // namespace tallbook::peers
