// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/AccountsFile.h"

#include <optional>
#include <system_error>
#include <utility>

#include "tallbook/AccountsManager.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "platform/Platform.h"
#include "store/KeptFiles.h"

namespace tallbook {
namespace {

using Kind = AccountsFileState::Kind;

constexpr std::string_view kFolder = "/var/mobile/Library/Preferences";
constexpr std::string_view kOperation = "-[AccountsManager saveAllAccounts]";
const char* const kOwner = "mobile";

std::string folderPath() {
  return Platform::current().directories().systemRoot() + std::string(kFolder);
}

bool isAbsence(const std::error_code& error) {
  return error == std::errc::no_such_file_or_directory;
}

std::optional<std::string> serialised(std::vector<Value> records, SaveFailure& failure) {
  const DictionaryRef root =
      Dictionary::make({{kPlistAccountsKey, Array::make(std::move(records))},
                        {kPlistVersionKey, AccountsManager::currentVersion()}});
  std::string problem;
  std::optional<std::string> bytes = binaryPropertyList(root, &problem);
  if (bytes && bytes->size() > FileSystem::kLargestFile) {
    problem = "the file would be too large to be read again";
    bytes.reset();
  }
  if (!bytes) {
    logMessage(kOperation, [&] { return "Failed to serialize tallbook data: " + problem; });
    failure = {"write the accounts as a property list", problem, {}};
  }
  return bytes;
}

SaveFailure systemsRefusal(const std::string& operation, const std::error_code& error) {
  return {operation, error.message(), error};
}

/// A new file of the owner's, complete and flushed; where it cannot be made, none.
SaveFailure makeFile(Folder& folder, const std::string& name, const std::string& bytes,
                     const FileVersion& replaced) {
  std::error_code error;
  const auto file = folder.create(name, error);
  if (!file) return systemsRefusal("make a new accounts file", error);
  SaveFailure failure;
  if ((error = file->write(bytes))) {
    failure = systemsRefusal("write the new accounts file", error);
  } else if ((error = file->giveTo(kOwner, kOwner))) {
    logMessage(kOperation, [&] {
      return "Could not set attributes on the temporary tallbook plist. " + error.message();
    });
    failure =
        systemsRefusal("give the new accounts file to the account and the group \"mobile\"", error);
  } else if ((error = file->finish(replaced))) {
    failure = systemsRefusal("flush the new accounts file to the disk", error);
  }
  if (failure) static_cast<void>(folder.remove(name));
  return failure;
}

}  // namespace

std::string AccountsFile::path() {
  return folderPath() + "/" + kAccountsFilename.str();
}

AccountsFile AccountsFile::read() {
  AccountsFile file;
  std::error_code error;
  file._folder = Platform::current().fileSystem().openFolder(folderPath(), error);
  if (!file._folder) {
    file._folderError = error;
  } else {
    FileContent content = file._folder->read(kAccountsFilename.str());
    file._version = content.version;
    file._held = std::move(content.held);
    error = content.error;
    try {
      if (!error) file._contents = accountsFileFromBytes(content.bytes);
    } catch (const std::system_error& noParser) {
      file._contents.state = {Kind::Unreadable, 0, noParser.what(), noParser.code()};
    }
  }
  if (error && !isAbsence(error))
    file._contents.state = {Kind::Unreadable, 0, error.message(), error};
  return file;
}

AccountsFileSave AccountsFile::replace(std::vector<Value> records,
                                       std::optional<Generations::Cause> cause) const {
  AccountsFileSave save;
  tryToReplace(std::move(records), cause, save);
  if (save.end == Replacement::Failed) {
    logMessage(kOperation, [] { return std::string("Failed to save accounts to filesystem."); });
  }
  return save;
}

std::string AccountsFile::keepAsGeneration(Generations::Cause cause) const {
  if (state().kind != Kind::Whole) return {};
  std::string failure = Generations(*_folder).keep(_version, cause);
  if (!failure.empty()) logMessage(kOperation, [&] { return failure; });
  return failure;
}

Replacement AccountsFile::keepTheOneRead(std::optional<Generations::Cause> cause,
                                         AccountsFileSave& save) const {
  if (state().kind == Kind::Malformed) {
    return keepMalformedFile(*_folder, kAccountsFilename.str(), _version, save.failure);
  }
  if (cause) save.generationFailure = keepAsGeneration(*cause);
  return Replacement::Done;
}

void AccountsFile::tryToReplace(std::vector<Value> records, std::optional<Generations::Cause> cause,
                                AccountsFileSave& save) const {
  if (state().kind == Kind::Unreadable) {
    save.failure = {"read the accounts file, which is left as it is", state().reason,
                    state().error};
    return;
  }
  const std::optional<std::string> bytes = serialised(std::move(records), save.failure);
  if (!bytes) return;
  if (!_folder) {
    save.failure = systemsRefusal("open the folder " + folderPath(), _folderError);
    return;
  }
  const std::string name = _folder->freshName();
  save.failure = makeFile(*_folder, name, *bytes, _version);
  if (save.failure) return;
  save.end = keepTheOneRead(cause, save);
  if (save.end != Replacement::Done) {
    static_cast<void>(_folder->remove(name));
    return;
  }
  std::error_code error;
  // Only migrations have to know a version of their own again.
  if (!cause || *cause == Generations::Cause::Migration) {
    save.version = _folder->look(name, error).version;
  }
  save.end = replaceIfUnchanged(*_folder, kAccountsFilename.str(), _version, name, error);
  if (save.end == Replacement::Failed) {
    save.failure = systemsRefusal("put the new accounts file in place", error);
  } else if (save.end == Replacement::NotTheFileRead) {
    static_cast<void>(_folder->remove(name));
  } else if (error) {
    // Readers see the new file from the rename on, so the save is done whatever the disk says now.
    logMessage(kOperation, [&] {
      return "Could not flush the folder of the accounts file. " + error.message();
    });
  }
}

}  // namespace tallbook
