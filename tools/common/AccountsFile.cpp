#include "tools/common/AccountsFile.h"

#include <filesystem>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/KindName.h"
#include "tools/common/Output.h"

namespace tallbook::tool {

ArrayRef AccountsFile::records() const {
  return content ? (*content)[kPlistAccountsKey].array() : nullptr;
}

AccountsFile readAccountsFile(const std::string& path) {
  AccountsFile file{readDictionaryFile(path)};
  if (!file.content) return file;
  const Value& records = (*file.content)[kPlistAccountsKey];
  if (records.kind() == Value::Kind::Array || records.isNull()) return file;
  file.problem =
      "\"Accounts\" is of the kind " + std::string(nameOfKind(records.kind())) + ", not array";
  file.content = nullptr;
  file.state = AccountsFile::State::Unreadable;
  return file;
}

AccountsFile readAccountsFile() {
  return readAccountsFile(AccountsManager::fullPathToTallbookPlist());
}

Failure unreadable(const AccountsFile& file, const std::string& advice) {
  return Failure(ExitCode::Unreadable,
                 file.path + " is no accounts file: " + file.problem + "; " + advice);
}

void keepCopyOf(const AccountsFile& file) {
  std::error_code failure;
  for (int number = 1;; ++number) {
    const std::string copy = file.path + ".unreadable-" + std::to_string(number);
    if (std::filesystem::copy_file(file.path, copy, failure)) {
      note("the unreadable file is kept as " + copy);
      return;
    }
    if (failure != std::errc::file_exists) {
      throw Failure(ExitCode::NotSaved, file.path + " cannot be copied (" + failure.message() +
                                            "), so it is left as it is; copy it yourself, "
                                            "remove it, and repeat the command");
    }
  }
}

}  // namespace tallbook::tool
