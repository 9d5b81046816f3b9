// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxFolder.h"

#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallbook {
namespace {

std::error_code outcome(int result) {
  return result == 0 ? std::error_code() : lastSystemError();
}

FileKind kindOf(const struct stat& status) {
  if (S_ISREG(status.st_mode)) return FileKind::Regular;
  if (S_ISDIR(status.st_mode)) return FileKind::Directory;
  return S_ISLNK(status.st_mode) ? FileKind::Link : FileKind::Other;
}

FileVersion versionOf(const struct stat& status) {
  return {status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec,
          static_cast<std::uint64_t>(status.st_size)};
}

/// A descriptor that lives with those who share it.
std::shared_ptr<const void> shared(FileDescriptor file) {
  return std::make_shared<const FileDescriptor>(std::move(file));
}

std::error_code notPermitted() {
  return make_error_code(std::errc::operation_not_permitted);
}

/// What the kernel says of an entry of the folder; nothing, with an empty mask, where it says none.
struct statx statusOf(const FileDescriptor& folder, const std::string& name) {
  struct statx status {};
  if (::statx(folder.get(), name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) != 0) {
    status = {};
  }
  return status;
}

std::error_code give(const FileDescriptor& file, const AccountDatabase& accounts,
                     const std::string& owner, const std::string& group) {
  std::error_code error;
  const auto user = accounts.userNamed(owner, error);
  if (!user) return error;
  const auto userGroup = accounts.groupNamed(group, error);
  if (!userGroup) return error;
  return outcome(::fchown(file.get(), *user, *userGroup));
}

bool isLater(const timespec& a, const FileVersion& b) {
  return a.tv_sec != b.modifiedSeconds ? a.tv_sec > b.modifiedSeconds
                                       : a.tv_nsec > b.modifiedNanoseconds;
}

/// Dates the file after the replaced one, by the least step that its file system can tell apart.
std::error_code dateAfter(const FileDescriptor& file, const FileVersion& replaced) {
  constexpr long kNanosecondsInASecond = 1'000'000'000;
  for (const long step : {1L, kNanosecondsInASecond, 2 * kNanosecondsInASecond}) {
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return lastSystemError();
    if (!replaced || isLater(status.st_mtim, replaced)) return {};
    const long nanoseconds = static_cast<long>(replaced.modifiedNanoseconds) + step;
    const timespec later{replaced.modifiedSeconds + nanoseconds / kNanosecondsInASecond,
                         nanoseconds % kNanosecondsInASecond};
    const timespec times[2] = {{0, UTIME_OMIT}, later};
    if (::futimens(file.get(), times) != 0) return lastSystemError();
  }
  return {};
}

class LinuxNewFile final : public NewFile {
 public:
  LinuxNewFile(FileDescriptor file, const AccountDatabase& accounts)
      : _file(std::move(file)), _accounts(accounts) {}

  std::error_code write(std::string_view bytes) override { return _file.write(bytes); }
  std::error_code giveTo(const std::string& owner, const std::string& group) override {
    return give(_file, _accounts, owner, group);
  }
  std::error_code finish(const FileVersion& replaced) override {
    if (const auto error = dateAfter(_file, replaced)) return error;
    if (const auto error = _file.flush()) return error;
    return _file.close();
  }

 private:
  FileDescriptor _file;
  const AccountDatabase& _accounts;
};

}  // namespace

std::error_code obstacleToGiving(const AccountDatabase& accounts, const std::string& owner,
                                 const std::string& group) {
  const FileDescriptor file(::memfd_create("tallbook", MFD_CLOEXEC));
  return file ? give(file, accounts, owner, group) : lastSystemError();
}

std::error_code makeFolder(const FileDescriptor& above, const std::string& name, unsigned mode) {
  if (::mkdirat(above.get(), name.c_str(), S_IRWXU) != 0) return lastSystemError();
  // The process's mask must not take bits away; the folder is opened so that they go to the one
  // that was made, whatever has its name by now.
  std::error_code error;
  const auto made =
      FileDescriptor::openAt(above, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW, 0, error);
  const auto bits = static_cast<mode_t>(mode);
  if (made) {
    error = outcome(::fchmod(made.get(), bits));
  } else if (error == std::errc::permission_denied) {
    // The mask took so many that nobody may open it.
    error = outcome(::fchmodat(above.get(), name.c_str(), bits, AT_SYMLINK_NOFOLLOW));
  }
  // One that nobody may enter would be in the way for good.
  if (error) ::unlinkat(above.get(), name.c_str(), AT_REMOVEDIR);
  return error;
}

FileContent LinuxFolder::read(const std::string& name) const {
  FileContent content;
  FileDescriptor file = openToRead(
      [&](int flags, std::error_code& error) {
        return _root.openAt(_folder, name, flags | O_NOFOLLOW, error);
      },
      content.error);
  if (content.error == std::errc::too_many_symbolic_link_levels) {
    // The version is the link's own: it is the link that a rename puts another file in place of.
    std::error_code unseen;
    content.version = look(name, unseen).version;
    content.bytes = _root.readFile(_path + "/" + name, content.error);
    return content;
  }
  if (!file) return content;
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) {
    content.error = lastSystemError();
    return content;
  }
  content.version = versionOf(status);
  content.bytes = readRegularFile(file, status, content.error);
  content.held = shared(std::move(file));
  return content;
}

FileLook LinuxFolder::look(const std::string& name, std::error_code& error) const {
  struct stat status {};
  if (::fstatat(_folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    error.clear();
    return {kindOf(status), versionOf(status)};
  }
  error = lastSystemError();
  if (error == std::errc::no_such_file_or_directory) error.clear();
  return {};
}

std::vector<std::string> LinuxFolder::names(std::error_code& error) const {
  // Every save asks, so by the folder's own descriptor: `opendir` takes twice as many calls.
  std::vector<std::string> names;
  error = ::lseek(_folder.get(), 0, SEEK_SET) < 0 ? lastSystemError() : std::error_code();
  alignas(dirent64) char entries[8192];
  while (!error) {
    const ssize_t length = ::getdents64(_folder.get(), entries, sizeof entries);
    if (length < 0) error = lastSystemError();
    if (length <= 0) break;
    for (ssize_t at = 0; at < length;) {
      const auto* const entry = reinterpret_cast<const dirent64*>(entries + at);
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") names.emplace_back(name);
      at += entry->d_reclen;
    }
  }
  return names;
}

std::string LinuxFolder::freshName() const {
  return freshFileName();
}

std::unique_ptr<NewFile> LinuxFolder::create(const std::string& name, std::error_code& error) {
  auto file = FileDescriptor::openAt(_folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW,
                                     S_IRUSR | S_IWUSR, error);
  if (!file) return nullptr;
  // Whatever the process's mask.
  error = outcome(::fchmod(file.get(), S_IRUSR | S_IWUSR));
  if (!error) return std::make_unique<LinuxNewFile>(std::move(file), _accounts);
  static_cast<void>(remove(name));
  return nullptr;
}

std::error_code LinuxFolder::remove(const std::string& name) {
  return outcome(::unlinkat(_folder.get(), name.c_str(), 0));
}

std::error_code LinuxFolder::rename(const std::string& from, const std::string& to) {
  return outcome(::renameat(_folder.get(), from.c_str(), _folder.get(), to.c_str()));
}

std::error_code LinuxFolder::renameToNew(const std::string& from, const std::string& to) {
  const std::error_code error = outcome(
      ::renameat2(_folder.get(), from.c_str(), _folder.get(), to.c_str(), RENAME_NOREPLACE));
  if (error != std::errc::invalid_argument && error != std::errc::function_not_supported) {
    return error;
  }
  // A file system that cannot do it in one step.
  if (const auto failed = link(from, *this, to)) return failed;
  static_cast<void>(remove(from));
  return {};
}

std::error_code LinuxFolder::link(const std::string& name, Folder& to, const std::string& newName) {
  // All folders of this file system are of this class.
  const auto& target = static_cast<const LinuxFolder&>(to);
  return outcome(::linkat(_folder.get(), name.c_str(), target._folder.get(), newName.c_str(), 0));
}

std::error_code LinuxFolder::makeNote(const std::string& name, const std::string& text) {
  return outcome(::symlinkat(text.c_str(), _folder.get(), name.c_str()));
}

std::string LinuxFolder::noteText(const std::string& name, std::error_code& error) const {
  char text[PATH_MAX];
  const ssize_t length = ::readlinkat(_folder.get(), name.c_str(), text, sizeof text);
  error = length < 0 ? lastSystemError() : std::error_code();
  return length < 0 ? std::string() : std::string(text, static_cast<std::size_t>(length));
}

std::unique_ptr<Folder> LinuxFolder::folder(const std::string& name, std::error_code& error) {
  auto found = _root.openAt(_folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW, error);
  if (!found) return nullptr;
  return std::make_unique<LinuxFolder>(std::move(found), _path + "/" + name, _root, _accounts);
}

std::error_code LinuxFolder::makeFolder(const std::string& name, const std::string& owner,
                                        const std::string& group) {
  if (const auto error = tallbook::makeFolder(_folder, name, S_IRWXU)) return error;
  std::error_code error;
  const auto made =
      FileDescriptor::openAt(_folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW, 0, error);
  if (made) error = give(made, _accounts, owner, group);
  // A folder of the wrong owner would keep the right one out for good.
  if (error) ::unlinkat(_folder.get(), name.c_str(), AT_REMOVEDIR);
  return error;
}

std::error_code LinuxFolder::obstacleToMaking() const {
  if (::faccessat(_folder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0) return lastSystemError();
  const struct statx folder = statusOf(_folder, ".");
  return folder.stx_attributes & STATX_ATTR_IMMUTABLE ? notPermitted() : std::error_code();
}

std::error_code LinuxFolder::obstacleToTaking(const std::string& name) const {
  if (const auto error = obstacleToMaking()) return error;
  // Attributes that keep even the superuser out, and a folder whose files are their owners' own.
  constexpr auto kFrozen = std::uint64_t{STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND};
  const struct statx folder = statusOf(_folder, ".");
  const struct statx file = statusOf(_folder, name);
  if ((folder.stx_attributes | file.stx_attributes) & kFrozen) return notPermitted();
  const uid_t caller = ::geteuid();
  const bool isOwn = caller == 0 || caller == folder.stx_uid || caller == file.stx_uid;
  const bool isThere = file.stx_mask != 0;
  return isThere && !isOwn && (folder.stx_mode & S_ISVTX) ? notPermitted() : std::error_code();
}

std::error_code LinuxFolder::flush() {
  const std::error_code error = _folder.flush();
  // Said by file systems that have nothing to flush for a folder.
  return error == std::errc::invalid_argument ? std::error_code() : error;
}

}  // namespace tallbook
