// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/AccountsFile.h"

#include "tallbook/AccountsManager.h"

#include "tools/common/FileBytes.h"
#include "tools/common/Output.h"

namespace tallbook::tool {
namespace {

using Kind = AccountsFileState::Kind;

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

AccountsFile readAccountsFile() {
  return {AccountsManager::readAccountsFile(), AccountsManager::fullPathToTallbookPlist()};
}

Failure unusable(const AccountsFile& file, const std::string& advice) {
  const bool isRead = file.state.kind == Kind::Malformed;
  return Failure(ExitCode::Unreadable,
                 file.path + (isRead ? " is no accounts file: " : " cannot be read: ") +
                     file.state.reason + "; " +
                     (isRead ? advice : adviceOnUnreadable(file.state.error)));
}

void requirePrintable(const AccountsFile& file) {
  PrintedSize size;
  size.add(file.topLevel, 0);
  if (!size.isTooLarge()) return;
  throw Failure(ExitCode::Unreadable,
                file.path + " holds more than the " + std::to_string(kMostPrinted >> 20) +
                    " MiB that can be printed, counting what its values share wherever it occurs; "
                    "restore it from a copy, or remove the account that makes it so large");
}

void noteMissing(const AccountsFile& file) {
  if (file.state.kind == Kind::Missing) note("there is no " + file.path + " yet");
}

std::vector<AccountsGeneration> generations() {
  AccountsHistory::List list = AccountsHistory::list();
  if (list.problem.empty()) return std::move(list.generations);
  throw Failure(ExitCode::Unreadable,
                "the generations cannot be listed: " + list.problem + "; run as mobile");
}

}  // namespace tallbook::tool
