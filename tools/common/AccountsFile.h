// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tallbook/AccountsFileContents.h"
#include "tallbook/AccountsHistory.h"

#include "tools/common/Outcome.h"

namespace tallbook::tool {

/// An accounts file and where it was read.
struct AccountsFile : AccountsFileContents {
  std::string path;

  /// A store reads such a file as an empty one: it is no accounts file, or could not be read.
  bool isUnusable() const {
    return state.kind == AccountsFileState::Kind::Malformed ||
           state.kind == AccountsFileState::Kind::Unreadable;
  }
};

/// The device's own file.
AccountsFile readAccountsFile();
/// The failure that names an unusable file. The advice is for one that is no accounts file; what to
/// do about one that could not be read depends on why.
Failure unusable(const AccountsFile& file, const std::string& advice);
/// Throws Failure for a file whose content, what its values share written out wherever it occurs,
/// is more than anyone reads: a small file may share one long text a million times.
void requirePrintable(const AccountsFile& file);
/// Says that there is no file yet, where that is so.
void noteMissing(const AccountsFile& file);
/// The generations of the device's file, the newest first. Throws Failure where they cannot be
/// listed.
std::vector<AccountsGeneration> generations();

}  // namespace tallbook::tool
