// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsHistory.h"

#include "tools/tallbook/AccountsText.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/FileDifferences.h"

namespace tallbook::tool {
namespace {

/// The accounts file of that path, else the generation of that name.
AccountsFile accountsFileOrGeneration(const std::string& name) {
  AccountsFile file = readAccountsText(name);
  if (file.state.kind != AccountsFileState::Kind::Missing) return file;
  file.topLevel = AccountsHistory::content(name).accountsFile;
  if (file.topLevel) file.state.kind = AccountsFileState::Kind::Whole;
  return file;
}

DictionaryRef contentOf(const AccountsFile& file) {
  if (file.state.kind == AccountsFileState::Kind::Missing) {
    throw Failure(ExitCode::NotFound, "there is no file and no generation " + file.path);
  }
  if (file.isUnusable()) throw unusable(file, "give another file to compare");
  requirePrintable(file);
  return file.topLevel;
}

}  // namespace

ExitCode diff(const Options& options) {
  const DictionaryRef contentBefore = contentOf(accountsFileOrGeneration(options.before));
  const DictionaryRef contentAfter = contentOf(
      options.after.empty() ? readAccountsFile() : accountsFileOrGeneration(options.after));
  printDifferences(differencesBetween(contentBefore, contentAfter), options.json);
  return ExitCode::Done;
}

}  // namespace tallbook::tool
