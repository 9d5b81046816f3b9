#include <optional>
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

// Whole or not at all; a failure is not reported.
void writeAtomically(FileSystem& files, const std::string& folder, const std::string& name,
                     const std::string& bytes) {
  const std::optional<std::string> temporary = files.temporaryPathIn(folder);
  if (!temporary || files.createFile(*temporary, bytes)) return;
  if (files.rename(*temporary, folder + "/" + name)) {
    static_cast<void>(files.remove(*temporary));
  }
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
  if (!files.exists(folder)) {
    if (const std::error_code error = files.createDirectories(folder, 0777)) {
      consoleLog(
          "AccountMigration warning: Could not create the directory to store migration information "
          "at " +
          folder + " [Error = " + error.message() + "]");
      return;
    }
  } else if (!files.isDirectory(folder)) {
    consoleLog("Brennick warning: " + folder + " already exists and is not a directory");
    return;
  }
  // There is none when nothing was to be migrated.
  if (!_collatedMigrationData) return;
  const std::string name =
      "AccountMigrationInformation-" + stamp(Platform::current().clock().now()) + ".txt";
  if (const auto bytes = binaryPropertyList(_collatedMigrationData)) {
    writeAtomically(files, folder, name, *bytes);
  }
}

}  // namespace tallbook
