// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <system_error>
#include <utility>

struct stat;

namespace tallbook {

/// The error of the last failed system call.
std::error_code lastSystemError() noexcept;

/// An open file that is closed with its owner.
class FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  explicit FileDescriptor(int fd) noexcept : _fd(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : _fd(std::exchange(other._fd, -1)) {}
  FileDescriptor& operator=(FileDescriptor other) noexcept {
    std::swap(_fd, other._fd);
    return *this;
  }
  ~FileDescriptor();

  /// Opens without passing the file on to programs that the process starts, retrying when
  /// interrupted. `flags` and `mode` are those of `open`.
  static FileDescriptor open(const std::string& path, int flags, unsigned mode,
                             std::error_code& error);
  /// The same below an open folder.
  static FileDescriptor openAt(const FileDescriptor& folder, const std::string& path, int flags,
                               unsigned mode, std::error_code& error);

  explicit operator bool() const noexcept { return _fd >= 0; }
  int get() const noexcept { return _fd; }
  /// Gives the descriptor up to the caller, who closes it.
  int release() noexcept { return std::exchange(_fd, -1); }

  /// Writes all the bytes.
  std::error_code write(std::string_view bytes) const;
  /// Flushes content and metadata to the disk.
  std::error_code flush() const;
  /// Closes at once. An error means that the file system could not keep what was written.
  std::error_code close();

 private:
  int _fd = -1;
};

/// Writes all the bytes to an open file, however many calls that takes.
std::error_code writeAll(int fd, std::string_view bytes);

/// The content of an open regular file of at most `FileSystem::kLargestFile` bytes; an error and
/// nothing for everything else, never a wait for a pipe's writer.
std::string readRegularFile(const FileDescriptor& file, std::error_code& error);
/// The same, `status` being what the kernel says of the file.
std::string readRegularFile(const FileDescriptor& file, const struct stat& status,
                            std::error_code& error);

}  // namespace tallbook
