#include "tools/tallbook-migrate/PrivateCopy.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
// Only the system's own calls leave access times as they are, and make a pipe.
#include <fcntl.h>
#include <fstream>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "tallbook/Vocabulary.h"

#include "tools/common/MobileUser.h"
#include "tools/common/Outcome.h"
#include "tools/common/Output.h"

namespace tallbook::migrate {
namespace {

namespace fs = std::filesystem;

// The library reads no longer file.
constexpr off_t kLongestRead = off_t{1} << 30;

[[noreturn]] void fail(const fs::path& path) {
  throw fs::filesystem_error("copying", path, std::error_code(errno, std::generic_category()));
}

fs::path freshFolder(const DevicePaths& device) {
  const fs::path above = fs::canonical(fs::temp_directory_path());
  std::error_code unknown;
  for (fs::path folder = above; folder != "/"; folder = folder.parent_path()) {
    for (const std::string& own : {device.root, device.home, device.sharedHome}) {
      if (own.empty() || !fs::equivalent(folder, own, unknown)) continue;
      throw tool::Failure(tool::ExitCode::NotSaved,
                          "the temporary folder " + above.string() +
                              " lies in the device, which a dry run leaves as it is; choose "
                              "another with TMPDIR");
    }
  }
  std::string name = above / "tallbook-migrate-XXXXXX";
  if (!::mkdtemp(name.data())) fail(name);
  return name;
}

fs::perms permissionsOfCaller(const Stop& folder) {
  constexpr int kOwners = 6;
  int permissions = 0;
  for (const int one : {R_OK, W_OK, X_OK}) {
    if (::faccessat(folder.folder, folder.name.c_str(), one, AT_EACCESS) == 0) permissions |= one;
  }
  return static_cast<fs::perms>(permissions << kOwners);
}

// Opens the file itself, whatever has its name by now.
Descriptor openUntouched(int file) {
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  const Descriptor opened = owned(::open(path.c_str(), O_RDONLY | O_NOATIME | O_CLOEXEC));
  if (opened || errno != EPERM) return opened;
  return owned(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

// Zeros become holes. The copy of what cannot be read, or is longer than the library reads, is
// longer than that as well, so that nobody can read it either.
void copyFile(const Stop& stop, const fs::path& to) {
  const Descriptor copy =
      owned(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!copy) fail(to);
  const Descriptor file = openUntouched(stop.file);
  if (!file) ::fchmod(*copy, 0);
  const bool isReadable = file && stop.status.st_size <= kLongestRead;
  std::vector<char> piece(1 << 16);
  off_t size = 0;
  ssize_t got = -1;
  while (isReadable && size <= kLongestRead &&
         (got = ::read(*file, piece.data(), piece.size())) > 0) {
    const auto length = static_cast<std::size_t>(got);
    const bool isZero =
        piece[0] == 0 && std::memcmp(piece.data(), piece.data() + 1, length - 1) == 0;
    if (!isZero && ::pwrite(*copy, piece.data(), length, size) != got) fail(to);
    size += got;
  }
  if (::ftruncate(*copy, got < 0 ? kLongestRead + 1 : size) != 0) fail(to);
}

// The link's text as it leads to the same place in the copy, whoever follows it.
fs::path textOfCopy(const Stop& link) {
  if (link.target.is_relative()) return link.target;
  return link.target.lexically_relative("/" / link.place.parent_path());
}

/// What a migration looks for: the catalogues, and one string table in the user's languages.
std::vector<std::string> namesOfResources() {
  std::vector<std::string> names = {"AccountTypesProperties.plist", "DataclassesProperties.plist",
                                    "AccountCreators.plist", "en/DeviceLocalAccount.strings"};
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* const locale = std::getenv(variable);
    // "de_AT.UTF-8" is "de_AT" as well, and "de".
    for (std::string language = locale ? locale : ""; !language.empty();) {
      names.push_back(language + "/DeviceLocalAccount.strings");
      const auto end = language.find_last_of("_.@");
      language.resize(end == std::string::npos ? 0 : end);
    }
  }
  return names;
}

}  // namespace

PrivateCopy::PrivateCopy(const DevicePaths& device) {
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_BLOCK, &all, &_signals);
  try {
    _root = freshFolder(device);
    copyAll(device);
  } catch (...) {
    remove();
    throw;
  }
}

PrivateCopy::~PrivateCopy() {
  remove();
}

void PrivateCopy::remove() noexcept {
  std::error_code failure;
  for (const auto& [folder, permissions] : _folders) {
    fs::permissions(folder, fs::perms::owner_all, failure);
  }
  fs::remove_all(_root, failure);
  if (failure) tool::note("the temporary folder " + _root.string() + " could not be removed");
  ::sigprocmask(SIG_SETMASK, &_signals, nullptr);
}

void PrivateCopy::copyAll(const DevicePaths& device) {
  const auto copyAt = [&](const std::string& path) {
    static_cast<void>(openBelow(device.root, path, [this](const Stop& stop) { copy(stop); }));
  };
  const bool hasTwoHomes = device.home != device.sharedHome;
  const std::string home = device.home.substr(device.root.size() + 1);
  if (hasTwoHomes) {
    // A tree has one for both.
    fs::create_directory(_root / "var");
    fs::create_directory_symlink("../" + home, _root / "var/mobile");
  }
  const std::string library = device.home + "/Library/";
  for (const char* name :
       {"Mail/Accounts.plist", "Mail/Accounts.plist.original", "Mail/AutoFetchEnabled",
        "Preferences/com.orvane.Syncora.plist", "Preferences/com.orvane.Syncora.plist.original",
        "Preferences/.removingOldAccounts", "Preferences/com.orvane.tallbook-logging.plist",
        "Preferences/com.orvane.tallbook-history.plist", "Logs/Dorvix/AccountMigration"}) {
    copyAt(library + name);
    // Nobody reads what was moved aside before, but its names are taken.
    std::string aside = library + name + ".unreadable-1";
    for (int next = 2; openBelow(device.root, aside); ++next) {
      const std::ofstream taken(_root / aside.substr(device.root.size() + 1));
      aside = library + name + ".unreadable-" + std::to_string(next);
    }
  }
  if (hasTwoHomes) fs::create_directories(_root / home);
  copyAt(device.accounts);
  copyAt(device.sharedHome + "/Library/Preferences/.tallbook-generations");
  copyAt(device.copyOfAccounts);
  copyAt(device.root + kAccountMigrationLockFilename);
  for (const char* facts :
       {"DeviceInformation", "Restrictions", "PairingRecords", "SyncSources", "HostedService"}) {
    copyAt(device.root + "/etc/tallbook/" + facts + ".plist");
  }
  if (device.root.empty()) {
    // Its resources stand beside the library.
    tool::copyMobile(_root);
  } else {
    copyAt(device.root + "/etc/passwd");
    copyAt(device.root + "/etc/group");
    for (const std::string& name : namesOfResources()) {
      copyAt(device.root + "/usr/share/tallbook/" + name);
    }
  }
  for (auto folder = _folders.rbegin(); folder != _folders.rend(); ++folder) {
    fs::permissions(folder->first, folder->second);
  }
}

void PrivateCopy::copy(const Stop& stop) {
  const fs::path to = _root / stop.place;
  if (fs::exists(fs::symlink_status(to))) return;
  if (isFrozen(stop.folder, stop.name)) {
    tool::note("/" + stop.place.string() +
               " is immutable or append-only, and the copy is not: a migration may end otherwise");
  }
  if (S_ISDIR(stop.status.st_mode)) {
    fs::create_directory(to);
    _folders.emplace(to, permissionsOfCaller(stop));
  } else if (S_ISLNK(stop.status.st_mode)) {
    fs::create_symlink(textOfCopy(stop), to);
  } else if (S_ISREG(stop.status.st_mode)) {
    copyFile(stop, to);
  } else if (::mkfifo(to.c_str(), S_IRUSR | S_IWUSR) != 0) {  // which is no file either
    fail(to);
  }
}

}  // namespace tallbook::migrate
