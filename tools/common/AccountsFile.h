#pragma once

#include <string>

#include "tools/common/DictionaryFile.h"
#include "tools/common/Outcome.h"

namespace tallbook::tool {

/// An accounts file as it lies on the disk. A store reads a damaged file as an empty one; here it
/// is unreadable, and so is one whose "Accounts" is no array.
struct AccountsFile : DictionaryFile {
  /// What stands under "Accounts"; null where nothing does.
  ArrayRef records() const;
};

AccountsFile readAccountsFile(const std::string& path);
/// The device's own file.
AccountsFile readAccountsFile();
/// The failure that names an unreadable file.
Failure unreadable(const AccountsFile& file, const std::string& advice);
/// Throws Failure for a file whose content, what its values share written out wherever it occurs,
/// is more than anyone reads: a small file may share one long text a million times.
void requirePrintable(const AccountsFile& file);
/// Copies a file that is about to be replaced to the first free name beside it, and says so. Throws
/// Failure where it cannot be copied.
void keepCopyOf(const AccountsFile& file);

}  // namespace tallbook::tool
