#include "tools/common/AccountsFile.h"

#include <filesystem>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/KindName.h"
#include "tools/common/Output.h"

namespace tallbook::tool {
namespace {

constexpr std::size_t kMostPrinted = std::size_t{128} << 20;

/// About how many bytes a value takes when it is printed; counting ends when they are too many.
class PrintedSize {
 public:
  void add(const Value& value, std::size_t depth) {
    constexpr std::size_t kAround = 8;  // quotes, brackets, the end of the line
    if (isTooLarge()) return;
    _bytes += kAround + 2 * depth;
    if (const auto text = value.stringView()) {
      _bytes += text->size();
    } else if (const auto data = value.data()) {
      _bytes += data->bytes().size() / 3 * 4;
    } else if (const ArrayRef array = value.array()) {
      for (const Value& element : *array) add(element, depth + 1);
    } else if (const DictionaryRef dictionary = value.dictionary()) {
      for (const auto& [key, below] : *dictionary) {
        _bytes += kAround + key.view().size();
        add(below, depth + 1);
      }
    }
  }
  bool isTooLarge() const { return _bytes > kMostPrinted; }

 private:
  std::size_t _bytes = 0;
};

}  // namespace

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

void requirePrintable(const AccountsFile& file) {
  PrintedSize size;
  size.add(file.content, 0);
  if (!size.isTooLarge()) return;
  throw Failure(ExitCode::Unreadable,
                file.path + " holds more than the " + std::to_string(kMostPrinted >> 20) +
                    " MiB that can be printed, counting what its values share wherever it occurs; "
                    "restore it from a copy, or remove the account that makes it so large");
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
