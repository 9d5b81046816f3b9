// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tallbook/AccountsFileContents.h"
#include "tallbook/SaveFailure.h"
#include "tallbook/Value.h"

#include "platform/FileReplacement.h"
#include "store/Generations.h"

namespace tallbook {

/// How a save ended.
struct AccountsFileSave {
  Replacement end = Replacement::Failed;
  SaveFailure failure;            ///< of a failed one
  std::string generationFailure;  ///< why the file before could not be kept; else empty
  FileVersion version;            ///< of a migration's new file
};

/// The accounts file as it was at one moment, which is the version that a save may replace. The
/// library's only way to read and to write it.
class AccountsFile {
 public:
  static std::string path();
  /// Looks at the file once, through one descriptor.
  static AccountsFile read();

  const AccountsFileContents& contents() const noexcept { return _contents; }
  const AccountsFileState& state() const noexcept { return _contents.state; }
  const DictionaryRef& content() const noexcept { return _contents.topLevel; }
  ArrayRef records() const { return _contents.records(); }

  const FileVersion& version() const noexcept { return _version; }

  /// Writes a new file with these record dictionaries and puts it in place of the one that was
  /// read. `Failed`, with the reason and log lines, leaves the old file untouched and no other
  /// file behind; so does `NotTheFileRead`, where somebody else has replaced it since.
  ///
  /// What is replaced is kept beside it: an accounts file as a generation, unless there is no
  /// `cause`; a file that is none as an unreadable file, else it is not replaced.
  AccountsFileSave replace(std::vector<Value> records,
                           std::optional<Generations::Cause> cause) const;
  /// Keeps an accounts file as a generation. What could not be done, on one line; else empty.
  std::string keepAsGeneration(Generations::Cause cause) const;

 private:
  void tryToReplace(std::vector<Value> records, std::optional<Generations::Cause> cause,
                    AccountsFileSave& save) const;
  /// `Done` where the file may be replaced.
  Replacement keepTheOneRead(std::optional<Generations::Cause> cause, AccountsFileSave& save) const;

  AccountsFileContents _contents;
  std::shared_ptr<Folder> _folder;  ///< null where it could not be opened, for `_folderError`
  std::error_code _folderError;
  FileVersion _version;
  std::shared_ptr<const void> _held;
};

}  // namespace tallbook
