#include "platform/linux/LinuxNamedLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/linux/FileDescriptor.h"

namespace tallbook {
namespace {

constexpr mode_t kForAll = S_IRUSR | S_IRGRP | S_IROTH;

class FileLockHold final : public LockHold {
 public:
  explicit FileLockHold(FileDescriptor file) : _file(std::move(file)) {}
  // Unlocked by name, not by closing alone: a process forked meanwhile has the file open too.
  ~FileLockHold() override { ::flock(_file.get(), LOCK_UN); }

 private:
  FileDescriptor _file;
};

// Opens without the flag that creates: in a folder like /tmp the kernel may refuse that flag for
// another user's file. Does not wait for a pipe's writer.
FileDescriptor openExisting(const std::string& path, std::error_code& error) {
  return FileDescriptor::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, 0, error);
}

FileDescriptor openOrCreate(const std::string& path) {
  for (;;) {
    std::error_code error;
    auto file = openExisting(path, error);
    if (error != std::errc::no_such_file_or_directory) return file;
    file = FileDescriptor::open(path, O_RDONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kForAll, error);
    // Whatever the process's mask, other users must be able to open the file.
    if (file) ::fchmod(file.get(), kForAll);
    if (error != std::errc::file_exists) return file;
  }
}

bool waitForLock(const FileDescriptor& file) {
  int result;
  do {
    result = ::flock(file.get(), LOCK_EX);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

bool isRegular(const FileDescriptor& file) {
  struct stat status {};
  return ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

// Whether the locked file is still the one at the path: somebody who empties the folder may have
// removed it, and a later comer would lock another one.
bool isStillAt(const std::string& path, const FileDescriptor& file) {
  struct stat locked {};
  struct stat present {};
  return ::fstat(file.get(), &locked) == 0 && ::lstat(path.c_str(), &present) == 0 &&
         locked.st_dev == present.st_dev && locked.st_ino == present.st_ino;
}

}  // namespace

std::unique_ptr<LockHold> LinuxNamedLock::lock(std::string_view name) {
  if (name.empty() || name.find('/') != std::string_view::npos) return nullptr;
  const std::string path = _folder + std::string(name);
  for (;;) {
    FileDescriptor file = openOrCreate(path);
    if (!file || !isRegular(file) || !waitForLock(file)) return nullptr;
    if (isStillAt(path, file)) return std::make_unique<FileLockHold>(std::move(file));
  }
}

}  // namespace tallbook
