// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tallbook/Export.h"

namespace tallbook {

/// A file beside the accounts file that a save left there and that nothing reads.
struct LeftoverFile {
  std::string path;  ///< below the process's root, which it includes
  std::string why;   ///< on one line, with what to do about it
};

/// The new files of saves that were stopped, among them those of saves that run right now, and the
/// files that saves kept since they were no accounts files; by name. None where the folder cannot
/// be read.
[[nodiscard]] TALLBOOK_EXPORT std::vector<LeftoverFile> leftoverFiles();

}  // namespace tallbook
