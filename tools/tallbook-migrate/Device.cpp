#include "tools/tallbook-migrate/Device.h"

#include <cerrno>
// Only the system's own calls tell what the caller may do, and make a folder for another user.
#include <fcntl.h>
#include <filesystem>
#include <sys/fsuid.h>
#include <system_error>
#include <unistd.h>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Outcome.h"
#include "tools/common/Output.h"
#include "tools/tallbook-migrate/DeviceTree.h"

namespace tallbook::migrate {
namespace {

namespace fs = std::filesystem;

std::string lastError() {
  return std::generic_category().message(errno);
}

// The folder is the owner's from the first moment: given away later, it might be another one that
// somebody has put in its place. Whoever cannot become the owner makes none.
bool makeForOwnerOf(int above, const std::string& name) {
  struct stat status {};
  if (::fstat(above, &status) != 0) return false;
  const int group = ::setfsgid(status.st_gid);
  const int user = ::setfsuid(status.st_uid);
  const mode_t mask = ::umask(S_IWGRP | S_IWOTH);
  errno = EPERM;
  const bool isMade = static_cast<uid_t>(::setfsuid(static_cast<uid_t>(-1))) == status.st_uid &&
                      ::mkdirat(above, name.c_str(), ACCESSPERMS) == 0;
  ::umask(mask);
  ::setfsuid(static_cast<uid_t>(user));
  ::setfsgid(static_cast<gid_t>(group));
  return isMade;
}

}  // namespace

DevicePaths pathsOfDevice(const std::string& root) {
  DevicePaths paths;
  if (!root.empty()) paths.root = fs::absolute(root).lexically_normal().string();
  while (!paths.root.empty() && paths.root.back() == '/') paths.root.pop_back();
  paths.sharedHome = paths.root + "/var/mobile";
  paths.accounts = tallbookAccountsPath();
  paths.copyOfAccounts = paths.sharedHome + "/Library/Logs/Dorvix/" + kAccountsFilename.str();
  // ~/Library/Mail/Accounts.plist
  paths.home = fs::path(mailAccountsPath()).parent_path().parent_path().parent_path().string();
  return paths;
}

void requireReplaceable(const DevicePaths& device) {
  const fs::path file = device.accounts;
  const Descriptor folder = openBelow(device.root, file.parent_path());
  std::string why;
  if (!folder || ::faccessat(*folder, ".", W_OK | X_OK, AT_EACCESS) != 0) {
    why = "its folder cannot be written: " + lastError();
  } else if (isFrozen(*folder, ".")) {
    why = "its folder is append-only";
  } else if (isFrozen(*folder, file.filename())) {
    why = "it is immutable or append-only";
  } else {
    return;
  }
  throw tool::Failure(tool::ExitCode::NotSaved, "the accounts file " + device.accounts +
                                                    " cannot be replaced: " + why +
                                                    "; nothing was begun");
}

void makeFolderForCopy(const DevicePaths& device) {
  const fs::path copies = fs::path(device.copyOfAccounts).parent_path();
  for (const auto& folder : {copies.parent_path(), copies}) {
    if (openBelow(device.root, folder)) continue;
    const Descriptor above = openBelow(device.root, folder.parent_path());
    if (above && makeForOwnerOf(*above, folder.filename())) continue;
    tool::note("Library/Logs/Dorvix, the folder for the copy put aside, cannot be made: " +
               lastError());
    return;
  }
}

}  // namespace tallbook::migrate
