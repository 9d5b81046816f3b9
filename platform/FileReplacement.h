// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/FileSystem.h"

namespace tallbook {

/// How an attempt to replace a file ended.
enum class Replacement {
  Done,
  NotTheFileRead,  ///< another version lies there by now; nothing was changed
  Failed           ///< an error of the system; nothing was changed
};

/// Puts the finished file `finished` in the place of `name`, exactly if the version `read` still
/// lies there; none means that nothing does. Waits for nobody: whoever else was on the way to
/// replace that version, stopped or killed in the middle, is helped to its end first.
///
/// After `Done` the folder is flushed; `error` says so where it could not be. After
/// `NotTheFileRead` the finished file is still the caller's to remove, after `Failed`, with
/// `error`, it is removed already. Only versions that were put in place by this function, of files
/// that `NewFile::finish` dated after the version that they replace, are told apart without fail.
/// docs/accounts-file.md has the argument.
Replacement replaceIfUnchanged(Folder& folder, const std::string& name, const FileVersion& read,
                               const std::string& finished, std::error_code& error);

}  // namespace tallbook
