#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tallbook/AccountsFileState.h"
#include "tallbook/SaveFailure.h"
#include "tallbook/Value.h"

#include "platform/FileReplacement.h"

namespace tallbook {

/// The accounts file as it was at one moment, which is the version that a save may replace. The
/// library's only way to read and to write it.
class AccountsFile {
 public:
  static std::string path();
  /// Looks at the file once, through one descriptor.
  static AccountsFile read();

  const AccountsFileState& state() const noexcept { return _state; }
  /// The top-level dictionary; null where there is none.
  const DictionaryRef& content() const noexcept { return _content; }
  /// What stands under "Accounts"; null where that is no array.
  ArrayRef records() const;

  /// Writes a new file with these record dictionaries and puts it in place of the one that was
  /// read. `Failed`, with the reason and log lines, leaves the old file untouched and no other
  /// file behind; so does `NotTheFileRead`, where somebody else has replaced it since.
  Replacement replace(std::vector<Value> records, SaveFailure& failure) const;

 private:
  void interpret(const std::string& bytes);
  Replacement tryToReplace(std::vector<Value> records, SaveFailure& failure) const;

  AccountsFileState _state;
  DictionaryRef _content;
  std::shared_ptr<Folder> _folder;  ///< null where it could not be opened, for `_folderError`
  std::error_code _folderError;
  FileVersion _version;
  std::shared_ptr<const void> _held;
};

}  // namespace tallbook
