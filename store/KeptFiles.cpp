// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/KeptFiles.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "model/LibraryLogging.h"
#include "store/SecondName.h"

namespace tallbook {
namespace {

using std::errc;
using Number = std::uint64_t;

constexpr std::size_t kMostKept = 9;

class KeptFiles {
 public:
  KeptFiles(Folder& folder, const std::string& name, const FileVersion& version)
      : _folder(folder), _name(name), _version(version) {}

  Replacement keep(std::error_code& error) {
    // A number is taken when another process keeps a file at the same time, which is usually this
    // very one. Somebody who is always faster is no other save.
    for (std::size_t attempt = 0; attempt <= kMostKept; ++attempt) {
      std::vector<Number> numbers = present(error);
      if (error) return Replacement::Failed;
      if (!isAmong(numbers)) {
        const Number next = numbers.empty() ? 1 : numbers.back() + 1;
        const SecondName kept =
            giveSecondName(_folder, _name, _version, _folder, nameOf(next), error);
        if (kept == SecondName::AnotherVersion) return Replacement::NotTheFileRead;
        if (error == errc::file_exists) continue;
        if (kept == SecondName::Refused) return Replacement::Failed;
        numbers.push_back(next);
        removeOldest(numbers);
      }
      // The replacement must not reach the disk before what it replaces is kept there.
      error = _folder.flush();
      return error ? Replacement::Failed : Replacement::Done;
    }
    return Replacement::Failed;
  }

 private:
  std::string nameOf(Number number) const {
    return _name + kUnreadableEnding + std::to_string(number);
  }

  std::optional<Number> numberOf(std::string_view name) const {
    const std::size_t start = nameOf(0).size() - 1;
    if (name.size() <= start) return std::nullopt;
    Number number = 0;
    std::from_chars(name.data() + start, name.data() + name.size(), number);
    if (number == 0 || nameOf(number) != name) return std::nullopt;
    return number;
  }

  /// The numbers in use, the lowest first.
  std::vector<Number> present(std::error_code& error) const {
    std::vector<Number> numbers;
    for (const std::string& name : _folder.names(error)) {
      if (const auto number = numberOf(name)) numbers.push_back(*number);
    }
    std::ranges::sort(numbers);
    return numbers;
  }

  /// Whether the content is kept already.
  bool isAmong(const std::vector<Number>& numbers) const {
    VersionToKeep version(_folder, _name, _version);
    return std::ranges::any_of(
        numbers, [&](Number number) { return version.isKeptAs(_folder, nameOf(number)); });
  }

  void removeOldest(const std::vector<Number>& numbers) {
    for (std::size_t i = 0; i + kMostKept < numbers.size(); ++i) {
      if (const std::error_code error = _folder.remove(nameOf(numbers[i]))) {
        logMessage("-[AccountsManager saveAllAccounts]", [&] {
          return "Could not remove " + nameOf(numbers[i]) + ". " + error.message();
        });
      }
    }
  }

  Folder& _folder;
  const std::string& _name;
  const FileVersion& _version;
};

}  // namespace

Replacement keepMalformedFile(Folder& folder, const std::string& name, const FileVersion& version,
                              SaveFailure& failure) {
  std::error_code error;
  const Replacement kept = KeptFiles(folder, name, version).keep(error);
  if (kept == Replacement::Failed) {
    failure = {"keep the file that is no accounts file", error.message(), error};
  }
  return kept;
}

}  // namespace tallbook
