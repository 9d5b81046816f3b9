// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "migration/AccountsDataMigrator.h"

#include <string>
#include <system_error>

#include "tallbook/PlugInClass.h"

#include "migration/Console.h"
#include "platform/NamedLock.h"
#include "platform/OncePerPlatform.h"

namespace tallbook {
namespace {

const PlugInRegistration registration(kPlugInInterfaceVersion, [] {
  PlugInClass made;
  made.name = "AccountsDataMigrator";
  made.makeDataMigrator = [] { return std::make_unique<AccountsDataMigrator>(); };
  return made;
});

constexpr std::string_view kMailApplication = "com.orvane.quillpost";

/// Saves notify nobody while this lives: the migration's changes are no user's.
class SkippedNotifications {
 public:
  SkippedNotifications() { AccountsManager::_setShouldSkipNotifications(true); }
  ~SkippedNotifications() { AccountsManager::_setShouldSkipNotifications(false); }
  SkippedNotifications(const SkippedNotifications&) = delete;
  SkippedNotifications& operator=(const SkippedNotifications&) = delete;
};

/// The answer to an error of the system that hides what there is to migrate: nothing is changed,
/// and the next migration may see it.
bool refuse(const std::string& path, const std::error_code& error) {
  consoleLog("Could not look at " + path + ". " + error.message());
  return false;
}

/// Whether both paths lead to one file, as they do where a link leads from folder to folder.
bool isOneFile(const std::string& a, const std::string& b) {
  const auto versionAt = [](const std::string& path) {
    const SplitPath at(path);
    std::error_code error;
    const auto folder = Platform::current().fileSystem().openFolder(at.folder, error);
    return folder ? folder->look(at.name, error).version : FileVersion();
  };
  const FileVersion version = versionAt(a);
  return version && version == versionAt(b);
}

bool isThere(const std::string& path) {
  std::error_code unknown;
  return Platform::current().fileSystem().exists(path, unknown) || unknown;
}

void tellTheMailApplication() {
  Platform& platform = Platform::current();
  // Often there is no marker; then there is nothing to do.
  static_cast<void>(
      platform.fileSystem().remove(platform.directories().mailData() + "/AutoFetchEnabled"));
  platform.preferences().postChangedNotice(kMailApplication, "MailAccounts");
}

}  // namespace

String AccountsDataMigrator::dataClassName() const {
  return "accounts";
}

bool AccountsDataMigrator::performMigration() {
  const std::shared_ptr<LockHold> lock = AccountsManager::createAndLockMigrationLock();
  // A failure thrown by a step gives the lock back as well: its owner is this frame.
  const bool result = lock && executeMigrationSteps();
  AccountsManager::releaseMigrationLock(lock);
  return result;
}

bool AccountsDataMigrator::executeMigrationSteps() {
  const SkippedNotifications skipped;
  _copyAsideAccountsPlist();
  std::error_code unknown;
  const bool isRemovalInterrupted = _failedToRemoveOldAccountsInfo(unknown);
  // To convert what is half removed would bring old accounts back; to remove it unread could lose
  // them.
  if (unknown) return refuse(_absolutePathToOldAccountsInfoRemovalSentinel(), unknown);
  if (isRemovalInterrupted) {
    consoleLog("Detected that a removal old accounts info was in progress. Early return!.");
    _removeOldAccountsInfo();
    return true;
  }
  bool mail = false;
  bool syncora = false;
  bool newInfo = false;
  AccountsManager::shouldMigrateOldMailAccountsOldSyncoraAccountsNewTallbook(&mail, &syncora,
                                                                             &newInfo);
  if (!mail) _oldMailFile.fate = OldFile::Fate::Absent;
  if (!syncora) _oldSyncoraFile.fate = OldFile::Fate::Absent;
  // Of a file whose look failed the reason is asked now: it may be gone by the end.
  lookAgain(mailAccountsPath(), _oldMailFile);
  lookAgain(syncoraAccountPath(), _oldSyncoraFile);
  Store store = AccountsManager::initInsideOfMigration();
  if (store->fileState().kind == AccountsFileState::Kind::Unreadable) {
    return refuse(AccountsManager::fullPathToTallbookPlist(), store->fileState().error);
  }
  if (!mayGoOn(*store)) return false;
  tellLoading(store);
  bool result = true;
  if (mail || syncora || newInfo) {
    if (_saveMigrationInformation()) _collatedMigrationData = Dictionary::make();
    consoleLog("Migrating accounts");
    if (syncora) _migrateSyncoraAccounts(store);
    if (mail) _migrateMailAccounts(store);
    // The chain's answer alone is the migration's. A conversion that failed keeps its file.
    result = _migrateNewAccountsInfo(store);
    if (_whyUnreadable) {
      return refuse(AccountsManager::fullPathToTallbookPlist(), _whyUnreadable);
    }
  }
  store->setDataVersion(AccountsManager::currentVersion());
  saveStep(*store);
  const bool isSaved = _isSaved;
  endStage("saving", store);
  keepIfUnloadable(*store, _oldMailFile);
  keepIfUnloadable(*store, _oldSyncoraFile);
  store.reset();
  lookAgain(mailAccountsPath(), _oldMailFile);
  lookAgain(syncoraAccountPath(), _oldSyncoraFile);
  // Converted accounts that did not reach the accounts file stand in the legacy files alone.
  if (!result || !isSaved || (!mail && !syncora)) {
    tellBothKept(result ? "the accounts file was not replaced" : "a version step failed");
  } else {
    _removeOldAccountsInfo();
  }
  if (!result) return false;
  if (_saveMigrationInformation()) _saveCollatedMigrationInformation();
  tellTheMailApplication();
  return true;
}

bool AccountsDataMigrator::mayGoOn(AccountsManager& store) {
  const std::string why = store._keepGenerationBeforeMigration();
  if (why.empty() || !_copyAsideFailure || !_observer) return true;
  return _observer->mayGoOnWithoutCopy(
      why + "; it cannot be copied aside: " + _copyAsideFailure.message());
}

bool AccountsDataMigrator::isNeeded() {
  for (const std::string& path :
       {std::string(mailAccountsPath()), std::string(syncoraAccountPath()),
        _absolutePathToOldAccountsInfoRemovalSentinel()}) {
    std::error_code error;
    if (Platform::current().fileSystem().exists(path, error) || error) return true;
  }
  return AccountsManager::stateOfAccountsFile().kind == AccountsFileState::Kind::Unreadable ||
         AccountsManager::tallbookNeedsToBeMigrated();
}

void AccountsDataMigrator::prepareDevice() {
  std::error_code error;
  for (const auto& [above, name] : {std::pair("/Library", "Logs"), {"/Library/Logs", "Dorvix"}}) {
    const std::string path = Platform::current().directories().sharedResources() + above;
    const auto folder = Platform::current().fileSystem().openFolder(path, error);
    if (folder) error = folder->makeFolder(name, "mobile", "mobile");
    if (!error || error == std::errc::file_exists) continue;
    consoleLog("Could not make the folder " + (path + "/" + name) + ". " + error.message());
    return;
  }
}

void AccountsDataMigrator::_copyAsideAccountsPlist() {
  FileSystem& files = Platform::current().fileSystem();
  const std::string source = AccountsManager::fullPathToTallbookPlist();
  const std::string target = Platform::current().directories().sharedResources() +
                             "/Library/Logs/Dorvix/" + source.substr(source.rfind('/') + 1);
  // The accounts file must not go to make room for its copy, be it that copy itself or a link to
  // it: the copy takes the old one's place whole, or not at all.
  const std::string bytes = files.readFile(source, _copyAsideFailure);
  std::error_code removal = _copyAsideFailure;
  if (_copyAsideFailure == std::errc::no_such_file_or_directory && !isThere(source)) {
    removal = files.remove(target);
  } else if (!_copyAsideFailure) {
    removal = isOneFile(target, source) ? make_error_code(std::errc::file_exists)
                                        : files.replaceFile(target, bytes);
    _copyAsideFailure = removal;
  }
  if (removal && isThere(target)) {
    consoleLog("Couldn't remove existing tallbook copy at " + target);
  }
  if (_copyAsideFailure) {
    consoleLog("Error trying to save an tallbook plist copy: " + _copyAsideFailure.message());
  }
}

bool AccountsDataMigrator::_saveMigrationInformation() {
  static OncePerPlatform<bool> isWanted;
  return isWanted.get([] {
    return Platform::current()
        .preferences()
        .valueForKey("TBSaveMigrationInformation", "com.orvane.tallbook-logging")
        .boolValue();
  });
}

}  // namespace tallbook
