#include "store/AccountsFile.h"

#include <optional>
#include <system_error>
#include <utility>

#include "tallbook/AccountsManager.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "model/DictionaryFile.h"
#include "model/LibraryLogging.h"
#include "platform/Platform.h"

namespace tallbook::AccountsFile {
namespace {

constexpr std::string_view kFolder = "/var/mobile/Library/Preferences";
constexpr std::string_view kOperation = "-[AccountsManager saveAllAccounts]";
const char* const kOwner = "mobile";

std::string folder() {
  return Platform::current().directories().systemRoot() + std::string(kFolder);
}

std::optional<std::string> serialised(std::vector<Value> records) {
  const DictionaryRef root =
      Dictionary::make({{kPlistAccountsKey, Array::make(std::move(records))},
                        {kPlistVersionKey, AccountsManager::currentVersion()}});
  std::string problem;
  std::optional<std::string> bytes = binaryPropertyList(root, &problem);
  if (bytes && bytes->size() > FileSystem::kLargestFile) {
    problem = "the file would be too large to be read again";
    bytes.reset();
  }
  if (!bytes || !problem.empty()) {
    logMessage(kOperation, [&] { return "Failed to serialize tallbook data: " + problem; });
  }
  return bytes;
}

bool writeAndRename(FileSystem& files, const std::string& bytes, const std::string& temporary) {
  if (files.createFile(temporary, bytes)) return false;
  if (const std::error_code error = files.setOwner(temporary, kOwner, kOwner)) {
    logMessage(kOperation, [&] {
      return "Could not set attributes on the temporary tallbook plist. " + error.message();
    });
    return false;
  }
  return !files.rename(temporary, path());
}

}  // namespace

std::string path() {
  return folder() + "/" + kAccountsFilename.str();
}

DictionaryRef read() {
  return dictionaryFromFile(path());
}

bool replace(std::vector<Value> records) {
  FileSystem& files = Platform::current().fileSystem();
  const std::optional<std::string> bytes = serialised(std::move(records));
  const std::optional<std::string> temporary =
      files.temporaryPathIn(Platform::current().directories().temporary());
  if (!bytes || !temporary || !writeAndRename(files, *bytes, *temporary)) {
    logMessage(kOperation, [] { return std::string("Failed to save accounts to filesystem."); });
    // Nothing may be there to remove, and nothing more can be done where removing fails.
    if (temporary) static_cast<void>(files.remove(*temporary));
    return false;
  }
  // Readers see the new file from the rename on, so the save is done whatever the disk says now.
  if (const std::error_code error = files.flushDirectory(folder())) {
    logMessage(kOperation, [&] {
      return "Could not flush the folder of the accounts file. " + error.message();
    });
  }
  return true;
}

}  // namespace tallbook::AccountsFile
