// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>
#include <system_error>

#include "tallbook/PropertyList.h"

#include "migration/AccountsDataMigrator.h"
#include "migration/Console.h"
#include "model/DictionaryFile.h"

namespace tallbook {
namespace {

std::string stamp(const LocalTime& time) {
  std::string text = std::to_string(time.year);
  for (const int part : {time.month, time.day, time.hour, time.minute, time.second}) {
    text += "-" + std::to_string(part);
  }
  return text;
}

}  // namespace

void AccountsDataMigrator::collate(const String& key, const DictionaryRef& file) {
  if (_collatedMigrationData) _collatedMigrationData->set(key, file ? file : Dictionary::make());
}

void AccountsDataMigrator::_saveCollatedMigrationInformation() {
  consoleLog("Saving collated migration information");
  collate("NewTallbook", dictionaryFromFile(AccountsManager::fullPathToTallbookPlist()));
  FileSystem& files = Platform::current().fileSystem();
  const std::string folder =
      Platform::current().directories().mobileHome() + "/Library/Logs/Dorvix/AccountMigration";
  std::error_code error;
  if (!files.exists(folder, error)) {
    error = files.createDirectories(folder, 0777);
  } else if (!files.openFolder(folder, error) && error == std::errc::not_a_directory) {
    consoleLog("Brennick warning: " + folder + " already exists and is not a directory");
    return;
  }
  if (error) {
    consoleLog(
        "AccountMigration warning: Could not create the directory to store migration information "
        "at " +
        folder + " [Error = " + error.message() + "]");
    return;
  }
  // There is none when nothing was to be migrated.
  if (!_collatedMigrationData) return;
  const std::string name =
      "AccountMigrationInformation-" + stamp(Platform::current().clock().now()) + ".txt";
  // Whole or not at all; a failure is not reported.
  if (const auto bytes = binaryPropertyList(_collatedMigrationData)) {
    static_cast<void>(files.replaceFile(folder + "/" + name, *bytes));
  }
}

}  // namespace tallbook
