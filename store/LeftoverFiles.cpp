// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/LeftoverFiles.h"

#include <algorithm>
#include <system_error>

#include "tallbook/Vocabulary.h"

#include "platform/Platform.h"
#include "store/AccountsFile.h"
#include "store/KeptFiles.h"

namespace tallbook {
std::vector<LeftoverFile> leftoverFiles() {
  const SplitPath accounts(AccountsFile::path());
  std::error_code error;
  const auto folder = Platform::current().fileSystem().openFolder(accounts.folder, error);
  std::vector<LeftoverFile> files;
  if (!folder) return files;
  for (const std::string& name : folder->names(error)) {
    const std::string path = accounts.folder + "/" + name;
    if (isFreshFileName(name)) {
      files.push_back({path, "a save was stopped before it was done; remove it when nobody saves"});
    } else if (name.starts_with(accounts.name + kUnreadableEnding)) {
      files.push_back({path,
                       "a save found it in place of the accounts file; take from it what is "
                       "needed, and remove it"});
    }
  }
  std::ranges::sort(files, {}, &LeftoverFile::path);
  return files;
}

}  // namespace tallbook
