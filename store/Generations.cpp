// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/Generations.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "tallbook/Vocabulary.h"

#include "platform/Platform.h"
#include "store/SecondName.h"

namespace tallbook {
namespace {

using namespace std::chrono_literals;
using std::errc;
using Names = std::vector<GenerationName>;

constexpr const char* kFolder = ".tallbook-generations";
constexpr std::size_t kDefaultNumber = 10;
constexpr auto kBurst = 60s;

/// How many generations are wanted.
std::size_t preferredNumber() {
  // Not in the library's own domain: that is the accounts file itself.
  const Value number =
      Platform::current().preferences().valueForKey("Generations", "com.orvane.tallbook-history");
  if (number.kind() != Value::Kind::Integer) return kDefaultNumber;
  return number.isBeyondSigned() || number.integerValue() >= 0 ? number.unsignedValue() : 0;
}

/// Whether a save belongs to the burst that the newest generation was kept for. A clock that was
/// set back by a moment makes no difference; one that was set back further tells nothing, and then
/// the saves of a burst are kept one by one.
bool isInItsBurst(const GenerationName& newest, GenerationName::Time now) {
  return !newest.isOfMigration && std::chrono::abs(now - newest.kept) < kBurst;
}

std::error_code removeBeyond(std::size_t number, const Names& names, Folder& folder) {
  std::error_code failure;
  for (std::size_t i = names.size(); i > number; --i) {
    const std::error_code error = folder.remove(names[i - 1].text());
    // Another save may have removed it first.
    if (error && error != errc::no_such_file_or_directory) failure = error;
  }
  return failure;
}

std::string problem(const char* operation, const std::error_code& error) {
  return std::string("cannot ") + operation + ": " + error.message();
}

}  // namespace

std::string Generations::keep(const FileVersion& version, Cause cause) {
  constexpr const char* kKeeping = "keep the accounts file before as a generation";
  std::error_code error;
  auto folder = open(error);
  if (error == errc::no_such_file_or_directory) error.clear();
  Names names = folder ? in(*folder, error) : Names();
  if (error) return problem(kKeeping, error);
  const GenerationName::Time now = Platform::current().clock().instant();
  if (cause == Cause::Save && !names.empty() && isInItsBurst(names.front(), now)) return {};
  const std::size_t number = preferredNumber();
  if (number > 0) {
    if (!folder) folder = make(error);
    if (!folder || (error = keepIn(*folder, names, now, version, cause))) {
      return problem(kKeeping, error);
    }
  }
  if (folder) error = removeBeyond(number, names, *folder);
  return error ? problem("remove an old generation of the accounts file", error) : std::string();
}

std::unique_ptr<Folder> Generations::open(std::error_code& error) const {
  return _folder.folder(kFolder, error);
}

Names Generations::in(const Folder& folder, std::error_code& error) {
  Names names;
  for (const std::string& text : folder.names(error)) {
    if (const auto name = GenerationName::parse(text)) names.push_back(*name);
  }
  std::ranges::sort(names, std::ranges::greater());
  return names;
}

std::unique_ptr<Folder> Generations::make(std::error_code& error) {
  error = _folder.makeFolder(kFolder, "mobile", "mobile");
  // Another save may have made it first.
  return error && error != errc::file_exists ? nullptr : open(error);
}

std::error_code Generations::keepIn(Folder& folder, Names& names, GenerationName::Time now,
                                    const FileVersion& version, Cause cause) {
  GenerationName name{now, cause == Cause::Migration};
  std::error_code error;
  if (!names.empty()) {
    const GenerationName& newest = names.front();
    // A save that failed has kept it already; so has a migration that found nothing to do, and many
    // of these must not push everything else out.
    const bool isKept =
        cause == Cause::Migration
            ? newest.isOfMigration && VersionToKeep(_folder, kAccountsFilename.str(), version)
                                          .isKeptAs(folder, newest.text())
            : folder.look(newest.text(), error).version == version;
    if (isKept) return {};
    name.kept = std::max(name.kept, newest.kept + 1ns);
  }
  SecondName kept;
  while ((kept = giveSecondName(_folder, kAccountsFilename.str(), version, folder, name.text(),
                                error)) == SecondName::Refused) {
    if (error != errc::file_exists) return error;
    ++name.kept;
  }
  // Else somebody has replaced the version, and kept it before.
  if (kept == SecondName::Given) names.insert(names.begin(), name);
  return {};
}

}  // namespace tallbook
