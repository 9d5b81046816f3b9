// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>
#include <system_error>

#include "migration/AccountsDataMigrator.h"
#include "migration/Console.h"
#include "platform/Platform.h"
#include "store/KeptFiles.h"

namespace tallbook {
namespace {

using std::errc;
using Fate = OldFile::Fate;
using End = LegacyFileEnd::Kind;

FileSystem& fileSystem() {
  return Platform::current().fileSystem();
}

void tellFailedDeletion(const std::string& path, const std::error_code& error) {
  consoleLog("-[AccountsDataMigrator(Internal) _removeOldAccountsInfo]. Could not delete " + path +
             ". Error = " + error.message());
}

bool isFolder(const std::string& path) {
  std::error_code unknown;
  return fileSystem().openFolder(path, unknown) != nullptr;
}

}  // namespace

std::string AccountsDataMigrator::_absolutePathToOldAccountsInfoRemovalSentinel() const {
  return Platform::current().directories().mobileHome() +
         "/Library/Preferences/.removingOldAccounts";
}

bool AccountsDataMigrator::_failedToRemoveOldAccountsInfo(std::error_code& error) const {
  return fileSystem().exists(_absolutePathToOldAccountsInfoRemovalSentinel(), error);
}

void AccountsDataMigrator::lookAgain(const std::string& path, OldFile& file) {
  if (file.fate != Fate::Absent || !file.why.empty()) return;
  std::error_code error;
  const bool isThere = fileSystem().exists(path, error);
  if (error) file.why = "it cannot be looked at: " + error.message();
  if (isThere) file.why = "it came to lie there during the migration";
}

void AccountsDataMigrator::keepIfUnloadable(const AccountsManager& store, OldFile& file) {
  if (file.fate != Fate::MayGo) return;
  for (const RecordFault& fault : store.unloadableRecords()) {
    for (const Account& account : file.accounts) {
      if (Value(account->properties()) != fault.record) continue;
      file.fate = Fate::GoesAside;
      file.why = "it holds an account that no load accepts";
    }
  }
}

bool AccountsDataMigrator::_removeOldAccountsInfo() {
  const std::string sentinel = _absolutePathToOldAccountsInfoRemovalSentinel();
  moveAsideIfMeant(syncoraAccountPath(), _oldSyncoraFile);
  moveAsideIfMeant(mailAccountsPath(), _oldMailFile);
  const bool isBlind = _oldMailFile.fate != Fate::Stays && _oldSyncoraFile.fate != Fate::Stays;
  // Whoever finds the sentinel removes both files without looking into them. So there is none
  // where one of them has to stay; an interruption then only means that the other, still there, is
  // converted once more. One that is there already serves as well.
  if (isBlind) {
    static_cast<void>(
        fileSystem().createFile(sentinel, "Old Account Information Removal Sentinel"));
  }
  const std::error_code syncoraError = removeOldFile(syncoraAccountPath(), _oldSyncoraFile);
  if (syncoraError && _foundOldSyncoraAccountsToMigrate) {
    tellFailedDeletion(syncoraAccountPath(), syncoraError);
    tellEnd(mailAccountsPath(), End::Kept, "the legacy Exchange file could not be removed");
  } else {
    const std::error_code error = removeOldFile(mailAccountsPath(), _oldMailFile);
    if (error && _foundOldMailAccountsToMigrate) tellFailedDeletion(mailAccountsPath(), error);
  }
  if (isBlind) {
    std::error_code error = fileSystem().remove(sentinel);
    // A folder would make every migration to come end early.
    if (error && isFolder(sentinel)) error = moveAside(sentinel, "a folder is no removal sentinel");
    if (error) tellFailedDeletion(sentinel, error);
  }
  return !syncoraError;
}

void AccountsDataMigrator::moveAsideIfMeant(const std::string& path, OldFile& file) {
  if (file.fate != Fate::GoesAside) return;
  if (const std::error_code error = moveAside(path, file.why)) {
    consoleLog("Could not move " + path + " aside. " + error.message());
    file.fate = Fate::Stays;
    file.why += "; it cannot be moved aside: " + error.message();
  } else {
    file.fate = Fate::WentAside;
  }
}

std::error_code AccountsDataMigrator::moveAside(const std::string& path, const std::string& why) {
  const SplitPath at(path);
  std::error_code error;
  const auto folder = fileSystem().openFolder(at.folder, error);
  if (!folder) return error;
  std::string aside;
  int number = 1;
  do {
    aside = kUnreadableEnding + std::to_string(number++);
    error = folder->renameToNew(at.name, at.name + aside);
  } while (error == errc::file_exists || error == errc::directory_not_empty);
  if (!error) tellEnd(path, End::MovedAside, why, path + aside);
  return error;
}

std::error_code AccountsDataMigrator::removeOldFile(const std::string& path, const OldFile& file) {
  if (file.fate == Fate::WentAside) return {};
  if (file.fate == Fate::Stays) {
    tellEnd(path, End::Kept, file.why);
    return {};
  }
  if (file.fate == Fate::Absent) {
    if (!file.why.empty()) tellEnd(path, End::Kept, file.why);
    return make_error_code(errc::no_such_file_or_directory);
  }
  const SplitPath at(path);
  std::error_code error;
  const auto folder = fileSystem().openFolder(at.folder, error);
  if (folder && file.version) {
    const FileVersion now = folder->look(at.name, error).version;
    if (!error && now && now != file.version) {
      tellEnd(path, End::Kept, "another file was put in its place during the migration");
      return {};
    }
  }
  if (!error) error = folder->remove(at.name);
  if (!error) {
    tellEnd(path, End::Removed, {});
  } else if (isFolder(path)) {
    return moveAside(path, "it is a folder");
  } else if (error != errc::no_such_file_or_directory) {
    tellEnd(path, End::Kept, "it cannot be removed: " + error.message());
  }
  return error;
}

}  // namespace tallbook
