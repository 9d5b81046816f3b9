#include <string>
#include <system_error>

#include "migration/AccountsDataMigrator.h"
#include "migration/Console.h"

namespace tallbook {
namespace {

void tellFailedDeletion(const std::string& path, const std::error_code& error) {
  consoleLog("-[AccountsDataMigrator(Internal) _removeOldAccountsInfo]. Could not delete " + path +
             ". Error = " + error.message());
}

}  // namespace

std::string AccountsDataMigrator::_absolutePathToOldAccountsInfoRemovalSentinel() const {
  return Platform::current().directories().mobileHome() +
         "/Library/Preferences/.removingOldAccounts";
}

bool AccountsDataMigrator::_failedToRemoveOldAccountsInfo(std::error_code& error) const {
  return Platform::current().fileSystem().exists(_absolutePathToOldAccountsInfoRemovalSentinel(),
                                                 error);
}

std::error_code AccountsDataMigrator::whyNotAbsent(const std::string& path) {
  std::error_code error;
  const bool isThere = Platform::current().fileSystem().exists(path, error);
  return isThere ? make_error_code(std::errc::resource_unavailable_try_again) : error;
}

bool AccountsDataMigrator::_removeOldAccountsInfo() {
  FileSystem& files = Platform::current().fileSystem();
  const std::string sentinel = _absolutePathToOldAccountsInfoRemovalSentinel();
  const bool isBlind = _oldMailFile != OldFile::Stays && _oldSyncoraFile != OldFile::Stays;
  // Whoever finds the sentinel removes both files without looking into them. So there is none
  // where one of them has to stay; an interruption then only means that the other, still there, is
  // converted once more. One that is there already serves as well.
  if (isBlind) {
    static_cast<void>(files.createFile(sentinel, "Old Account Information Removal Sentinel"));
  }
  const std::error_code syncoraError =
      removeOldFile(syncoraAccountPath(), _oldSyncoraFile, _foundOldSyncoraAccountsToMigrate);
  if (!syncoraError || !_foundOldSyncoraAccountsToMigrate) {
    removeOldFile(mailAccountsPath(), _oldMailFile, _foundOldMailAccountsToMigrate);
  }
  if (isBlind) {
    if (const std::error_code error = files.remove(sentinel)) tellFailedDeletion(sentinel, error);
  }
  return !syncoraError;
}

std::error_code AccountsDataMigrator::removeOldFile(const std::string& path, OldFile state,
                                                    bool isErrorTold) {
  if (state == OldFile::Stays) return {};
  if (state == OldFile::Absent) return make_error_code(std::errc::no_such_file_or_directory);
  const std::error_code error = Platform::current().fileSystem().remove(path);
  if (error && isErrorTold) tellFailedDeletion(path, error);
  return error;
}

}  // namespace tallbook
