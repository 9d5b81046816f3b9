// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>
#include <system_error>

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "platform/NamedLock.h"
#include "platform/Platform.h"
#include "store/AccountsManagerState.h"

namespace tallbook {
namespace {

constexpr std::string_view kMigrationLockName = "AccountMigrationInProgress";

std::string oldMailAccountsPath() {
  return Platform::current().directories().mobileHome() + "/Library/Mail/Accounts.plist";
}

std::string oldSyncoraAccountsPath() {
  return Platform::current().directories().mobileHome() +
         "/Library/Preferences/com.orvane.Syncora.plist";
}

// What nobody could look at is not known to be there. The migration plug-in looks once more, and
// changes nothing where that fails.
bool isFound(std::string_view operation, const std::string& path) {
  std::error_code error;
  const bool found = Platform::current().fileSystem().exists(path, error);
  if (error) {
    logMessage(operation, [&] { return "Could not look at " + path + ". " + error.message(); });
  }
  return found;
}

void requireOutParameter(const bool* parameter, const char* failure) {
  if (!parameter) throw InternalConsistencyFailure(failure);
}

/// Whoever waits long is told in the library log, and by `longWait`, who holds the lock.
std::unique_ptr<LockHold> holdMigrationLock(
    std::string_view operation, const AccountsManager::LongWait& longWait,
    NamedLock::Deadline deadline = NamedLock::Deadline::max()) {
  const auto tell = [&](std::string_view holder) {
    logMessage(operation, [&] {
      return std::string("Waiting for the migration lock, held by ").append(holder);
    });
    if (longWait) longWait(holder);
  };
  return Platform::current().namedLock().lock(kMigrationLockName, tell, deadline);
}

}  // namespace

std::shared_ptr<LockHold> AccountsManager::createAndLockMigrationLock() {
  return holdMigrationLock("+[AccountsManager(MigrationSupport) createAndLockMigrationLock]", {});
}

std::string AccountsManager::_keepGenerationBeforeMigration() {
  const AccountsFile& file = _state->savesOfMigration->file;
  std::string failure = file.keepAsGeneration(Generations::Cause::Migration);
  if (failure.empty()) _state->savesOfMigration->known = file.version();
  return failure;
}

std::vector<Value> AccountsManager::_recordsAsSaved() const {
  return _state->savesOfMigration ? _state->savesOfMigration->records : std::vector<Value>();
}

void AccountsManager::releaseMigrationLock(const std::shared_ptr<LockHold>& lock) {
  if (lock) lock->release();
}

bool AccountsManager::waitForMigrationToFinish(const LongWait& longWait,
                                               std::optional<std::chrono::milliseconds> timeout) {
  using std::chrono::milliseconds;
  const auto now = std::chrono::steady_clock::now();
  const auto longest = std::chrono::duration_cast<milliseconds>(NamedLock::Deadline::max() - now);
  const auto deadline = timeout && *timeout < longest ? now + *timeout : NamedLock::Deadline::max();
  return holdMigrationLock("+[AccountsManager(MigrationSupport) waitForMigrationToFinish]",
                           longWait, deadline) != nullptr;
}

bool AccountsManager::tallbookNeedsToBeMigrated() {
  constexpr std::string_view kOperation =
      "+[AccountsManager(MigrationSupport) tallbookNeedsToBeMigrated]";
  const DictionaryRef file = AccountsFile::read().content();
  if (!file) return false;
  const Value& version = (*file)[kPlistVersionKey];
  if (!version.isNumber()) {
    logMessage(kOperation, [] {
      return std::string("Tallbook plist is missing a version number, returning NO for migration");
    });
    return false;
  }
  // Compared without sign: a negative version counts as current.
  if (version.unsignedValue() >= currentVersion()) return false;
  logMessage(kOperation, [&] {
    return "Tallbook Version out of date: savedVersion=" + std::to_string(version.integerValue()) +
           ", currentVersion=" + std::to_string(currentVersion());
  });
  return true;
}

void AccountsManager::shouldMigrateOldMailAccountsOldSyncoraAccountsNewTallbook(
    bool* oldMailAccounts, bool* oldSyncoraAccounts, bool* newTallbook) {
  requireOutParameter(oldMailAccounts, "migrateOldMailAccounts cannot be nil");
  requireOutParameter(oldSyncoraAccounts, "migrateOldSyncoraAccounts cannot be nil");
  requireOutParameter(newTallbook, "migrateNewAccounts cannot be nil");
  *oldMailAccounts = _oldMailAccountsInformationFound();
  *oldSyncoraAccounts = _oldSyncoraAccountsInformationFound();
  // Legacy records come first: while there are any, the version is not looked at.
  *newTallbook = !*oldMailAccounts && !*oldSyncoraAccounts && tallbookNeedsToBeMigrated();
  if (!*oldMailAccounts && !*oldSyncoraAccounts && !*newTallbook) return;
  const auto digit = [](bool flag) { return flag ? "1" : "0"; };
  logMessage(
      "+[AccountsManager(MigrationSupport) "
      "shouldMigrateOldMailAccounts:oldSyncoraAccounts:newTallbook:]",
      [&] {
        return std::string("Tallbook needs migration! oldMailAccountsPresent=") +
               digit(*oldMailAccounts) +
               ", oldSyncoraAccountsPresent=" + digit(*oldSyncoraAccounts) +
               ", migrateNewAccountsInfo=" + digit(*newTallbook);
      });
}

void AccountsManager::removeNewTallbookToMigrateOldAccountInformation() {
  const std::string path = fullPathToTallbookPlist();
  const std::error_code error = Platform::current().fileSystem().remove(path);
  if (!error || error == std::errc::no_such_file_or_directory) return;
  logMessage("+[AccountsManager(MigrationSupport) removeNewTallbookToMigrateOldAccountInformation]",
             [&] { return "Could not remove " + path + ". Error " + error.message(); });
}

bool AccountsManager::_oldMailAccountsInformationFound() {
  return isFound("+[AccountsManager(MigrationSupport) _oldMailAccountsInformationFound]",
                 oldMailAccountsPath());
}

bool AccountsManager::_oldSyncoraAccountsInformationFound() {
  return isFound("+[AccountsManager(MigrationSupport) _oldSyncoraAccountsInformationFound]",
                 oldSyncoraAccountsPath());
}

}  // namespace tallbook

const char* tallbookAccountsPath() {
  thread_local std::string path;
  return (path = tallbook::AccountsManager::fullPathToTallbookPlist()).c_str();
}

const char* mailAccountsPath() {
  thread_local std::string path;
  return (path = tallbook::oldMailAccountsPath()).c_str();
}

const char* syncoraAccountPath() {
  thread_local std::string path;
  return (path = tallbook::oldSyncoraAccountsPath()).c_str();
}
