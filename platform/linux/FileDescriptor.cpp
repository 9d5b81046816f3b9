// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FileSystem.h"

namespace tallbook {
namespace {

std::error_code whyNotReadable(const struct stat& status) {
  if (S_ISDIR(status.st_mode)) return make_error_code(std::errc::is_a_directory);
  if (!S_ISREG(status.st_mode)) return make_error_code(std::errc::not_supported);
  if (status.st_size > static_cast<off_t>(FileSystem::kLargestFile)) {
    return make_error_code(std::errc::file_too_large);
  }
  return {};
}

// More than the `expected` bytes come where somebody writes meanwhile: one more is asked for, and
// where it does not come, that was all. Fewer are a file that was cut off under the reader: an
// error, since its content was another a moment ago. A string's growth writes zeros, so it goes in
// pieces that are read into while they are still in the caches. What says that it is empty may be a
// table of the kernel's, which is right only within one read: so a whole piece is asked for.
std::string readToEnd(int fd, std::size_t expected, std::error_code& error) {
  constexpr std::size_t kPiece = std::size_t{1} << 18;
  std::string bytes;
  bytes.reserve(expected + 1);
  for (std::size_t used = 0;;) {
    const bool isWithin = expected > 0 && used <= expected;
    bytes.resize(used + (isWithin ? std::min(expected + 1 - used, kPiece) : kPiece));
    const ssize_t got = ::read(fd, bytes.data() + used, bytes.size() - used);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      error = lastSystemError();
      return {};
    }
    used += static_cast<std::size_t>(got);
    if (used > FileSystem::kLargestFile) {
      error = make_error_code(std::errc::file_too_large);
      return {};
    }
    const bool isEnd = got == 0 || (used == expected && used < bytes.size());
    if (!isEnd) continue;
    if (used < expected) {
      error = make_error_code(std::errc::io_error);
      return {};
    }
    bytes.resize(used);
    return bytes;
  }
}

}  // namespace

std::error_code lastSystemError() noexcept {
  return {errno, std::generic_category()};
}

FileDescriptor::~FileDescriptor() {
  (void)close();
}

FileDescriptor FileDescriptor::open(const std::string& path, int flags, unsigned mode,
                                    std::error_code& error) {
  return openAt(FileDescriptor(AT_FDCWD), path, flags, mode, error);
}

FileDescriptor FileDescriptor::openAt(const FileDescriptor& folder, const std::string& path,
                                      int flags, unsigned mode, std::error_code& error) {
  int fd;
  do {
    fd = ::openat(folder.get(), path.c_str(), flags | O_CLOEXEC | O_NOCTTY,
                  static_cast<mode_t>(mode));
  } while (fd < 0 && errno == EINTR);
  error = fd < 0 ? lastSystemError() : std::error_code();
  return FileDescriptor(fd);
}

std::error_code FileDescriptor::write(std::string_view bytes) const {
  return writeAll(_fd, bytes);
}

std::error_code FileDescriptor::flush() const {
  int result;
  do {
    result = ::fsync(_fd);
  } while (result != 0 && errno == EINTR);
  return result == 0 ? std::error_code() : lastSystemError();
}

std::error_code FileDescriptor::close() {
  const int fd = std::exchange(_fd, -1);
  // An interrupted close has closed the file all the same.
  if (fd < 0 || ::close(fd) == 0 || errno == EINTR) return {};
  return lastSystemError();
}

std::error_code writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return lastSystemError();
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

std::string readRegularFile(const FileDescriptor& file, std::error_code& error) {
  struct stat status {};
  if (::fstat(file.get(), &status) == 0) return readRegularFile(file, status, error);
  error = lastSystemError();
  return {};
}

std::string readRegularFile(const FileDescriptor& file, const struct stat& status,
                            std::error_code& error) {
  error = whyNotReadable(status);
  if (error) return {};
  return readToEnd(file.get(), static_cast<std::size_t>(status.st_size), error);
}

}  // namespace tallbook
