#include "tools/tallbook-migrate/HostLock.h"

#include <cerrno>
// The library's lock is the migration's own; this one has to be taken around it.
#include <fcntl.h>
#include <filesystem>
#include <linux/openat2.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

#include "tools/common/Outcome.h"
#include "tools/common/Output.h"

namespace tallbook::migrate {
namespace {

constexpr const char* kName = ".tallbook-migrate.lock";
constexpr mode_t kForOwner = S_IRUSR | S_IWUSR;

// Makes the file for the folder's owner, whoever calls and whatever the process's mask. One of the
// caller's own would keep the owner's hosts out, so it is taken away again.
int make(int folder) {
  const int file =
      ::openat(folder, kName, O_RDONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kForOwner);
  if (file < 0) return file;
  struct stat status {};
  if (::fchmod(file, kForOwner) == 0 && ::fstat(folder, &status) == 0 &&
      ::fchown(file, status.st_uid, static_cast<gid_t>(-1)) == 0) {
    return file;
  }
  ::unlinkat(folder, kName, 0);
  ::close(file);
  return -1;
}

// Opens the folder at `path` below the root of a device tree, out of which no link may lead. Where
// the kernel cannot see to that, no link is followed.
int openBelow(const std::string& root, const std::string& path) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  if (root.empty()) return ::open(path.c_str(), kFlags);
  int folder = ::open(root.c_str(), kFlags);
  if (folder < 0) return folder;
  const std::filesystem::path below = std::filesystem::path(path).lexically_relative(root);
  open_how how{};
  how.flags = kFlags;
  how.resolve = RESOLVE_IN_ROOT;
  const long found = ::syscall(SYS_openat2, folder, below.c_str(), &how, sizeof how);
  if (found >= 0 || (errno != ENOSYS && errno != EPERM)) {
    ::close(folder);
    return static_cast<int>(found);
  }
  for (const auto& part : below) {
    const int next = ::openat(folder, part.c_str(), kFlags | O_NOFOLLOW);
    ::close(folder);
    folder = next;
  }
  return folder;
}

// Opens the file in the folder, or makes it. Without an answer `errno` is ENOENT where the caller
// cannot make it, else it tells why the one that is there cannot be opened.
int openOrMake(int folder) {
  for (;;) {
    // Does not wait for a pipe's writer.
    int file = ::openat(folder, kName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file >= 0 || errno != ENOENT) return file;
    file = make(folder);
    if (file < 0 && errno == EEXIST) continue;
    if (file < 0) errno = ENOENT;
    return file;
  }
}

}  // namespace

HostLock::HostLock(const std::string& root, const std::string& path) : _file(-1) {
  const int folder = openBelow(root, path);
  if (folder < 0) return;
  _file = openOrMake(folder);
  const int reason = _file < 0 ? errno : 0;
  ::close(folder);
  if (reason == ENOENT) return;
  if (reason != 0) {
    throw tool::Failure(tool::ExitCode::NotSaved,
                        "the lock of the migration hosts, " + path + "/" + kName +
                            ", cannot be opened: " + std::generic_category().message(reason) +
                            "; run as the owner of its folder, or remove what is not theirs");
  }
  if (::flock(_file, LOCK_EX | LOCK_NB) == 0) return;
  tool::note("another migration host is at work; waiting until it has finished");
  while (::flock(_file, LOCK_EX) != 0 && errno == EINTR) {
  }
}

HostLock::~HostLock() {
  if (_file >= 0) ::close(_file);
}

std::string stampOfFile(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return {};
  std::string stamp;
  for (const auto part : {static_cast<unsigned long long>(status.st_dev),
                          static_cast<unsigned long long>(status.st_ino),
                          static_cast<unsigned long long>(status.st_ctim.tv_sec),
                          static_cast<unsigned long long>(status.st_ctim.tv_nsec)}) {
    stamp += std::to_string(part) + "/";
  }
  return stamp;
}

}  // namespace tallbook::migrate
