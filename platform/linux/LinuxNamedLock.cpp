// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxNamedLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/LockHolder.h"

namespace tallbook {
namespace {

constexpr mode_t kForAll = S_IRUSR | S_IRGRP | S_IROTH;

class FileLockHold final : public LockHold {
 public:
  explicit FileLockHold(FileDescriptor file) : _file(std::move(file)) {}
  ~FileLockHold() override { release(); }

  void release() noexcept override {
    if (!_file) return;
    // Unlocked by name, not by closing alone: a process forked meanwhile has the file open too.
    ::flock(_file.get(), LOCK_UN);
    static_cast<void>(_file.close());
  }

 private:
  FileDescriptor _file;
};

// Opens without the flag that creates: in a folder like /tmp the kernel may refuse that flag for
// another user's file. Does not wait for a pipe's writer.
FileDescriptor openExisting(const FileDescriptor& folder, const std::string& name,
                            std::error_code& error) {
  return FileDescriptor::openAt(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, 0, error);
}

FileDescriptor openOrCreate(const FileDescriptor& folder, const std::string& name) {
  for (;;) {
    std::error_code error;
    auto file = openExisting(folder, name, error);
    if (error != std::errc::no_such_file_or_directory) return file;
    file = FileDescriptor::openAt(folder, name, O_RDONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kForAll,
                                  error);
    // Whatever the process's mask, other users must be able to open the file.
    if (file) ::fchmod(file.get(), kForAll);
    if (error != std::errc::file_exists) return file;
  }
}

// One try, which waits for the present holder or does not; true when the lock is held.
bool tryLock(const FileDescriptor& file, int howToWait) {
  int result;
  do {
    result = ::flock(file.get(), LOCK_EX | howToWait);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

// The kernel's own wait has no end, and ending it by a signal would meddle with the program's. So
// the first while goes by in short sleeps, and whoever waits longer hears for whom.
bool waitForLock(const FileDescriptor& file, std::chrono::milliseconds patience,
                 const NamedLock::LongWait& longWait, NamedLock::Deadline deadline) {
  constexpr std::chrono::milliseconds kPause{5};
  const auto end = std::chrono::steady_clock::now() + patience;
  bool isTold = false;
  while (!tryLock(file, LOCK_NB)) {
    if (errno != EWOULDBLOCK) return false;
    const auto now = std::chrono::steady_clock::now();
    if (now >= deadline) return false;
    if (now >= end && !isTold) {
      if (longWait) longWait(holderOfLockOn(file));
      if (deadline == NamedLock::Deadline::max()) return tryLock(file, 0);
      isTold = true;
    }
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

bool isRegular(const FileDescriptor& file) {
  struct stat status {};
  return ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

// Whether the locked file is still the one of that name: somebody who empties the folder may have
// removed it, and a later comer would lock another one.
bool isStillIn(const FileDescriptor& folder, const std::string& name, const FileDescriptor& file) {
  struct stat locked {};
  struct stat present {};
  return ::fstat(file.get(), &locked) == 0 &&
         ::fstatat(folder.get(), name.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0 &&
         locked.st_dev == present.st_dev && locked.st_ino == present.st_ino;
}

}  // namespace

std::unique_ptr<LockHold> LinuxNamedLock::lock(std::string_view name, const LongWait& longWait,
                                               Deadline deadline) {
  if (name.empty() || name.find('/') != std::string_view::npos) return nullptr;
  const std::string fileName(name);
  std::error_code error;
  const FileDescriptor folder = _root.open(_root.path() + "/tmp", O_RDONLY | O_DIRECTORY, 0, error);
  if (!folder) return nullptr;
  for (;;) {
    FileDescriptor file = openOrCreate(folder, fileName);
    if (!file || !isRegular(file) || !waitForLock(file, _patience, longWait, deadline)) {
      return nullptr;
    }
    if (isStillIn(folder, fileName, file)) return std::make_unique<FileLockHold>(std::move(file));
  }
}

}  // namespace tallbook
