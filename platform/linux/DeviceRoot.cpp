// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/DeviceRoot.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace tallbook {
namespace {

// As many links as the kernel follows.
constexpr int kMostLinks = 40;

/// The parts of a path, the next one last.
using Parts = std::vector<std::string>;

void prepend(Parts& parts, std::string_view path) {
  while (!path.empty()) {
    const auto slash = path.rfind('/');
    const auto part = slash == std::string_view::npos ? path : path.substr(slash + 1);
    if (!part.empty()) parts.emplace_back(part);
    path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
  }
}

bool isLink(const FileDescriptor& file) {
  struct stat status {};
  return ::fstat(file.get(), &status) == 0 && S_ISLNK(status.st_mode);
}

std::string textOf(const FileDescriptor& link) {
  char text[PATH_MAX];
  const ssize_t length = ::readlinkat(link.get(), "", text, sizeof text);
  return length < 0 ? std::string() : std::string(text, static_cast<std::size_t>(length));
}

}  // namespace

FileDescriptor openByWalking(const FileDescriptor& root, const std::string& path, int flags,
                             unsigned mode, std::error_code& error) {
  Parts parts;
  prepend(parts, path);
  // The folders from the root down: ".." means the one before, wherever that has been moved to.
  std::vector<FileDescriptor> folders;
  const auto here = [&]() -> const FileDescriptor& {
    return folders.empty() ? root : folders.back();
  };
  for (int links = 0; !parts.empty();) {
    const std::string part = std::move(parts.back());
    parts.pop_back();
    if (part == ".") continue;
    if (part == "..") {
      if (!folders.empty()) folders.pop_back();
      continue;
    }
    const bool isLast = parts.empty();
    FileDescriptor found = FileDescriptor::openAt(here(), part, O_PATH | O_NOFOLLOW, 0, error);
    const bool isToFollow = !isLast || (flags & (O_NOFOLLOW | O_EXCL)) == 0;
    if (found && isLink(found) && isToFollow) {
      if (++links > kMostLinks) {
        error = make_error_code(std::errc::too_many_symbolic_link_levels);
        return {};
      }
      const std::string text = textOf(found);
      if (text.starts_with('/')) folders.clear();
      prepend(parts, text);
      continue;
    }
    if (isLast) return FileDescriptor::openAt(here(), part, flags | O_NOFOLLOW, mode, error);
    if (!found) return {};
    folders.push_back(std::move(found));
  }
  return FileDescriptor::openAt(here(), ".", flags, mode, error);
}

FileDescriptor openConfined(const FileDescriptor& root, const std::string& path, int flags,
                            unsigned mode, std::error_code& error) {
  open_how how{};
  how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC | O_NOCTTY);
  // Flags of ours that a plain path descriptor does not know are an error to this call.
  if (flags & O_PATH) how.flags &= O_PATH | O_CLOEXEC | O_NOFOLLOW | O_DIRECTORY;
  if (flags & O_CREAT) how.mode = mode;
  how.resolve = RESOLVE_IN_ROOT;
  long fd;
  do {
    fd = ::syscall(SYS_openat2, root.get(), path.c_str(), &how, sizeof how);
    // The second is said when something was renamed on the way and the kernel cannot be sure.
  } while (fd < 0 && (errno == EINTR || errno == EAGAIN) && !(flags & O_NONBLOCK));
  if (fd < 0 && (errno == ENOSYS || errno == EPERM || errno == EAGAIN)) {
    return openByWalking(root, path, flags, mode, error);
  }
  error = fd < 0 ? lastSystemError() : std::error_code();
  return FileDescriptor(static_cast<int>(fd));
}

FileDescriptor openToRead(const std::function<FileDescriptor(int flags, std::error_code&)>& open,
                          std::error_code& error) {
  FileDescriptor file = open(O_RDONLY | O_NONBLOCK, error);
  if (error != std::errc::operation_would_block) return file;
  // Only a leased regular file says so. It is opened once more by its own inode, so that what is
  // waited for is that file and no pipe that has come to lie there.
  const FileDescriptor found = open(O_PATH, error);
  struct stat status {};
  if (!found) return {};
  if (::fstat(found.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    error = make_error_code(std::errc::operation_would_block);
    return {};
  }
  return FileDescriptor::open("/proc/self/fd/" + std::to_string(found.get()), O_RDONLY, 0, error);
}

DeviceRoot::DeviceRoot(std::string path, bool keepsAccessTimes)
    : _path(std::move(path)), _keepsAccessTimes(keepsAccessTimes) {
  std::error_code error;
  if (!_path.empty()) _root = FileDescriptor::open(_path, O_PATH | O_DIRECTORY, 0, error);
}

bool DeviceRoot::contains(std::string_view path) const noexcept {
  return path.starts_with(_path) && (path.size() == _path.size() || path[_path.size()] == '/');
}

template <class Open>
FileDescriptor DeviceRoot::openKeepingAccessTime(int flags, std::error_code& error,
                                                 const Open& open) const {
  if (_keepsAccessTimes && (flags & (O_ACCMODE | O_PATH)) == O_RDONLY) {
    FileDescriptor file = open(flags | O_NOATIME);
    if (error != std::errc::operation_not_permitted) return file;
  }
  return open(flags);
}

FileDescriptor DeviceRoot::open(const std::string& path, int flags, unsigned mode,
                                std::error_code& error) const {
  return openKeepingAccessTime(flags, error,
                               [&](int wanted) { return openAnywhere(path, wanted, mode, error); });
}

FileDescriptor DeviceRoot::openAt(const FileDescriptor& folder, const std::string& name, int flags,
                                  std::error_code& error) const {
  return openKeepingAccessTime(flags, error, [&](int wanted) {
    return FileDescriptor::openAt(folder, name, wanted, 0, error);
  });
}

FileDescriptor DeviceRoot::openAnywhere(const std::string& path, int flags, unsigned mode,
                                        std::error_code& error) const {
  if (_path.empty()) return FileDescriptor::open(path, flags, mode, error);
  if (contains(path)) {
    const std::string below = path.substr(_path.size());
    return openConfined(_root, below.empty() ? "/" : below, flags, mode, error);
  }
  if ((flags & (O_ACCMODE | O_CREAT | O_DIRECTORY)) == O_RDONLY) {
    return FileDescriptor::open(path, flags, mode, error);
  }
  error = make_error_code(std::errc::operation_not_permitted);
  return {};
}

std::string DeviceRoot::readFile(const std::string& path, std::error_code& error) const {
  const FileDescriptor file =
      openToRead([&](int flags, std::error_code& why) { return open(path, flags, 0, why); }, error);
  return file ? readRegularFile(file, error) : std::string();
}

bool DeviceRoot::hasFile(const std::string& path) const {
  struct stat status {};
  if (_path.empty() || !contains(path)) {
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  }
  std::error_code error;
  const FileDescriptor file = open(path, O_PATH, 0, error);
  return file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

bool DeviceRoot::belongsToCaller() const {
  struct stat status {};
  return ::fstat(_root.get(), &status) == 0 && status.st_uid == ::geteuid();
}

std::string DeviceRoot::placeOf(const FileDescriptor& file) {
  char text[PATH_MAX];
  const std::string name = "/proc/self/fd/" + std::to_string(file.get());
  const ssize_t length = ::readlink(name.c_str(), text, sizeof text);
  return length < 0 ? std::string() : std::string(text, static_cast<std::size_t>(length));
}

}  // namespace tallbook
