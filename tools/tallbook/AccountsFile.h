#pragma once

#include <string>

#include "tallbook/Value.h"

#include "tools/tallbook/Outcome.h"

namespace tallbook::tool {

/// An accounts file as it lies on the disk. A store reads a damaged file as an empty one; here it
/// is told from a missing one, so that nobody saves over accounts that could not be read.
struct AccountsFile {
  enum class State {
    Missing,
    Unreadable,  ///< no property list, no dictionary, or "Accounts" is no array
    Read
  };

  State state = State::Missing;
  std::string path;
  std::string problem;    ///< why it is unreadable, on one line
  DictionaryRef content;  ///< the top level; null unless read

  /// What stands under "Accounts"; null where nothing does.
  ArrayRef records() const;
};

AccountsFile readAccountsFile(const std::string& path);
/// The device's own file.
AccountsFile readAccountsFile();
/// The failure that names an unreadable file.
Failure unreadable(const AccountsFile& file, const std::string& advice);

}  // namespace tallbook::tool
