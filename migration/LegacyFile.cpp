// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "migration/LegacyFile.h"

#include <algorithm>
#include <array>
#include <optional>
#include <system_error>

#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "migration/Console.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

using std::errc;

/// Whether the error tells what lies there, and not that the system could not look.
bool isAboutTheFile(const std::error_code& error) {
  // A folder, a pipe, a device or a socket; a link to nothing, or to itself; more than anybody
  // reads.
  static constexpr std::array kKinds = {errc::is_a_directory,
                                        errc::not_supported,
                                        errc::no_such_device_or_address,
                                        errc::not_a_directory,
                                        errc::file_too_large,
                                        errc::no_such_file_or_directory,
                                        errc::too_many_symbolic_link_levels};
  return std::ranges::any_of(kKinds, [&](errc kind) { return error == kind; });
}

}  // namespace

LegacyFile::LegacyFile(std::string path) : _path(std::move(path)) {
  const SplitPath at(_path);
  const auto folder = Platform::current().fileSystem().openFolder(at.folder, _refusal);
  if (folder) {
    read(*folder, at.name);
  } else if (_refusal == errc::no_such_file_or_directory || _refusal == errc::not_a_directory) {
    _refusal.clear();
  }
}

void LegacyFile::read(const Folder& folder, const std::string& name) {
  const FileLook look = folder.look(name, _refusal);
  if (_refusal || look.kind == FileKind::Nothing) return;
  const FileContent file = folder.read(name);
  _version = file.error ? look.version : file.version;
  if (file.error) {
    if (isAboutTheFile(file.error)) {
      _whyNotUnderstood = "it is no file that can be read: " + file.error.message();
    } else {
      _refusal = file.error;
    }
    return;
  }
  std::optional<Value> root;
  try {
    root = propertyListFromBytes(file.bytes, &_whyNotUnderstood);
  } catch (const std::system_error& noParser) {
    _refusal = noParser.code();
  }
  if (!root) return;
  _contents = root->dictionary();
  if (!_contents) {
    _whyNotUnderstood = "its top level " + textOfWrongKind(*root, "dictionary");
  }
}

std::optional<AccountsManager::AccountList> LegacyFile::accountsMadeOf(
    std::string_view key, const Convert& convert, const std::string& complaint) {
  if (_refusal) return std::nullopt;
  const Value* found = _contents ? _contents->find(key) : nullptr;
  if (found && !found->array()) {
    _whyNotUnderstood = "its \"" + std::string(key) + "\" " + textOfWrongKind(*found, "array");
  }
  AccountsManager::AccountList accounts;
  const ArrayRef elements = descriptions(key);
  for (const Value& description : *elements) {
    auto account = convert(description.dictionary());
    if (!account) {
      consoleLog(complaint + description.description());
      return std::nullopt;
    }
    claimIdentifier(*account);
    accounts.push_back(std::move(account));
  }
  return accounts;
}

ArrayRef LegacyFile::descriptions(std::string_view key) const {
  const ArrayRef array = _contents ? (*_contents)[key].array() : nullptr;
  return array ? array : Array::make();
}

OldFile LegacyFile::end(std::optional<AccountsManager::AccountList> accounts) const {
  using Fate = OldFile::Fate;
  if (_refusal) return {Fate::Stays, "it cannot be read: " + _refusal.message(), {}, {}};
  if (!accounts) return {Fate::Stays, "an account of it cannot be converted", {}, {}};
  const Fate fate = _whyNotUnderstood.empty() ? Fate::MayGo : Fate::GoesAside;
  return {fate, _whyNotUnderstood, _version, *std::move(accounts)};
}

void LegacyFile::removeOriginal() const {
  static_cast<void>(Platform::current().fileSystem().remove(_path + ".original"));
}

// A store holds one account under an identifier; where a damaged file gives one to two accounts,
// the second must not take the first one's place, and gets identifiers of its own.
void LegacyFile::claimIdentifier(BasicAccount& account) {
  const String identifier = account.identifier();
  if (!identifier || _claimed.insert(identifier.str()).second) return;
  const String own = BasicAccount::createNewAccountUID();
  account.setAccountPropertyForKey(own, kAccountIdentifier);
  account.setAccountPropertyForKey(own, kAccountSyncIdentifier);
}

}  // namespace tallbook
