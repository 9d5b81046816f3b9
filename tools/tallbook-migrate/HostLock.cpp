#include "tools/tallbook-migrate/HostLock.h"

#include <cerrno>
// The library's lock is the migration's own; this one has to be taken around it.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/common/Output.h"

namespace tallbook::migrate {

HostLock::HostLock(const std::string& folder)
    : _folder(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (_folder < 0 || ::flock(_folder, LOCK_EX | LOCK_NB) == 0) return;
  tool::note("another migration host is at work; waiting until it has finished");
  while (::flock(_folder, LOCK_EX) != 0 && errno == EINTR) {
  }
}

HostLock::~HostLock() {
  if (_folder >= 0) ::close(_folder);
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
