#include "tools/tallbook-migrate/HostLock.h"

#include <cerrno>
// The library's lock is the migration's own; this one has to be taken around it.
#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

#include "tools/common/Outcome.h"
#include "tools/common/Output.h"

namespace tallbook::migrate {
namespace {

constexpr const char* kName = ".tallbook-migrate.lock";
constexpr mode_t kForOwner = S_IRUSR | S_IWUSR;

}  // namespace

HostLock::HostLock(const std::string& root, const std::string& path) {
  const Descriptor folder = openBelow(root, path);
  if (!folder) return;
  // Does not wait for a pipe's writer.
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  _file = owned(::openat(*folder, kName, kFlags | O_CREAT | O_EXCL, kForOwner));
  if (!_file && errno != EEXIST) return;
  struct stat status {};
  if (!_file) {
    _file = owned(::openat(*folder, kName, kFlags));
  } else if (::fchmod(*_file, kForOwner) != 0 || ::fstat(*folder, &status) != 0 ||
             ::fchown(*_file, status.st_uid, static_cast<gid_t>(-1)) != 0) {
    // One of the caller's own would keep the owner's hosts out.
    ::unlinkat(*folder, kName, 0);
    _file.reset();
    return;
  }
  if (!_file) {
    throw tool::Failure(tool::ExitCode::NotSaved,
                        "the lock of the migration hosts, " + path + "/" + kName +
                            ", cannot be opened: " + std::generic_category().message(errno) +
                            "; run as the owner of its folder, or remove what is not theirs");
  }
  if (::flock(*_file, LOCK_EX | LOCK_NB) == 0) return;
  tool::note("another migration host is at work; waiting until it has finished");
  while (::flock(*_file, LOCK_EX) != 0 && errno == EINTR) {
  }
}

}  // namespace tallbook::migrate
