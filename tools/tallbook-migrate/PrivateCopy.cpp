#include "tools/tallbook-migrate/PrivateCopy.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include "tallbook/Vocabulary.h"

#include "tools/common/MobileUser.h"
#include "tools/common/Output.h"
#include "tools/tallbook-migrate/UntouchedFiles.h"

namespace tallbook::migrate {
namespace {

namespace fs = std::filesystem;

fs::path freshFolder() {
  std::string name = (fs::temp_directory_path() / "tallbook-migrate-XXXXXX").string();
  if (!::mkdtemp(name.data())) {
    throw fs::filesystem_error("making a folder", name,
                               std::error_code(errno, std::generic_category()));
  }
  return name;
}

sigset_t endingSignals() {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int number : {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM}) {
    ::sigaddset(&signals, number);
  }
  return signals;
}

}  // namespace

PrivateCopy::PrivateCopy(const DevicePaths& device) : _root(freshFolder()) {
  try {
    copyAll(device);
  } catch (...) {
    remove();
    throw;
  }
}

PrivateCopy::~PrivateCopy() {
  remove();
}

void PrivateCopy::copyAll(const DevicePaths& device) {
  const fs::path root = device.root.empty() ? "/" : device.root;
  const fs::path home = _root / "var/mobile";
  // Where the home is another folder than the tree's, both come to lie in one.
  fs::create_directory(_root / "var");
  copyFolder(device.home, home);
  for (const char* relative :
       {"Library/Mail/Accounts.plist", "Library/Mail/Accounts.plist.original",
        "Library/Mail/AutoFetchEnabled", "Library/Preferences/com.orvane.Syncora.plist",
        "Library/Preferences/com.orvane.Syncora.plist.original",
        "Library/Preferences/.removingOldAccounts",
        "Library/Preferences/com.orvane.tallbook-logging.plist",
        "Library/Logs/Dorvix/AccountMigration/none"}) {
    copyBelow(device.home, home, relative);
  }
  const std::string name = kAccountsFilename.str();
  copyBelow(root, _root, "var/mobile/Library/Preferences/" + name);
  copyBelow(root, _root, "var/mobile/Library/Logs/Dorvix/" + name);
  copyBelow(root, _root, fs::path(kAccountMigrationLockFilename).relative_path());
  copyFolderBelow(root, _root, "etc/tallbook", 0);
  // The running system's resources stand beside the library.
  if (!device.root.empty()) copyFolderBelow(root, _root, "usr/share/tallbook", 1);
  tool::makeCallerMobile(_root);
  for (auto folder = _folders.rbegin(); folder != _folders.rend(); ++folder) {
    fs::permissions(folder->first, folder->second);
  }
}

void PrivateCopy::copyBelow(const Path& source, const Path& target, const Path& relative) {
  Path below;
  for (const Path& part : relative.parent_path()) {
    below /= part;
    if (!copyFolder(source / below, target / below)) return;
  }
  copyEntry(source / relative, target / relative);
}

void PrivateCopy::copyFolderBelow(const Path& source, const Path& target, const Path& relative,
                                  int depth) {
  std::error_code unknown;
  for (const std::string& name : namesInUntouched((source / relative).string())) {
    const Path entry = relative / name;
    if (!fs::is_directory(source / entry, unknown)) {
      copyBelow(source, target, entry);
    } else if (depth > 0) {
      copyFolderBelow(source, target, entry, depth - 1);
    }
  }
}

bool PrivateCopy::copyFolder(const Path& from, const Path& to) {
  std::error_code unknown;
  if (fs::exists(fs::symlink_status(to))) return fs::is_directory(to);
  const fs::file_status status = fs::status(from, unknown);
  if (status.type() != fs::file_type::directory) {
    copyEntry(from, to);
    return false;
  }
  fs::create_directory(to);
  _folders.emplace_back(to, status.permissions() & fs::perms::all);
  return true;
}

void PrivateCopy::copyEntry(const Path& from, const Path& to) {
  std::error_code unknown;
  if (fs::exists(fs::symlink_status(to))) return;
  switch (fs::symlink_status(from, unknown).type()) {
    case fs::file_type::none:  // it may not even be looked at, and its copy not either
    case fs::file_type::not_found:
      return;
    case fs::file_type::regular:
      return copyUntouched(from.string(), to.string());
    case fs::file_type::directory:
      static_cast<void>(copyFolder(from, to));
      return;
    case fs::file_type::symlink: {
      // A link stays one: it is removed and replaced like a file, and read like its target.
      const Path target = _root / ("linked-" + std::to_string(_linked++));
      fs::create_symlink(target, to);
      const Path final = fs::canonical(from, unknown);
      if (!unknown) copyEntry(final, target);
      return;
    }
    default:
      return makePipe(to.string());
  }
}

void PrivateCopy::remove() noexcept {
  std::error_code failure;
  for (const auto& [folder, permissions] : _folders) {
    fs::permissions(folder, fs::perms::owner_all, failure);
  }
  fs::remove_all(_root, failure);
  if (failure) tool::note("the temporary folder " + _root.string() + " could not be removed");
}

DelayedEnd::DelayedEnd() {
  const sigset_t signals = endingSignals();
  ::sigprocmask(SIG_BLOCK, &signals, nullptr);
}

DelayedEnd::~DelayedEnd() {
  const sigset_t signals = endingSignals();
  ::sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}

}  // namespace tallbook::migrate
