// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsHistory.h"

#include <memory>
#include <optional>

#include "tallbook/PropertyList.h"

#include "platform/Platform.h"
#include "store/AccountsFile.h"
#include "store/Generations.h"

namespace tallbook {
namespace {

using std::errc;

/// The generations' folder; null, without an error, where none was ever kept.
std::unique_ptr<Folder> openFolder(std::error_code& error) {
  const std::string beside = SplitPath(AccountsFile::path()).folder;
  const auto folder = Platform::current().fileSystem().openFolder(beside, error);
  auto generations = folder ? Generations(*folder).open(error) : nullptr;
  if (error == errc::no_such_file_or_directory) error.clear();
  return generations;
}

}  // namespace

AccountsHistory::List AccountsHistory::list() {
  List list;
  std::error_code error;
  if (const auto folder = openFolder(error)) {
    for (const GenerationName& name : Generations::in(*folder, error)) {
      std::error_code unseen;
      const FileLook file = folder->look(name.text(), unseen);
      // One that was removed meanwhile is none; one that cannot be looked at is there.
      if (file.kind == FileKind::Nothing && !unseen) continue;
      list.generations.push_back({name.text(), name.kept, file.version.size});
    }
  }
  if (error) list.problem = error.message();
  return list;
}

AccountsHistory::Content AccountsHistory::content(std::string_view name) {
  if (!GenerationName::parse(name)) return {nullptr, "no generation has such a name"};
  Content content;
  std::error_code error;
  const auto folder = openFolder(error);
  const FileContent file =
      folder ? folder->read(std::string(name)) : FileContent{error, {}, {}, {}};
  if (file.error == errc::no_such_file_or_directory || (!folder && !error)) {
    content.problem = "there is no such generation";
  } else if (file.error) {
    content.problem = file.error.message();
  } else if (const auto root = propertyListFromBytes(file.bytes, &content.problem)) {
    content.accountsFile = root->dictionary();
    if (!content.accountsFile) content.problem = "its top level is no dictionary";
  }
  return content;
}

std::vector<AccountsHistory::Remaining> AccountsHistory::forget() {
  std::error_code error;
  const auto folder = openFolder(error);
  std::vector<std::string> names;
  if (folder) names = folder->names(error);
  std::vector<Remaining> remaining;
  if (error) remaining.push_back({"", error.message()});
  for (const std::string& name : names) {
    const std::error_code refusal = folder->remove(name);
    if (refusal && refusal != errc::no_such_file_or_directory) {
      remaining.push_back({name, refusal.message()});
    }
  }
  return remaining;
}

}  // namespace tallbook
