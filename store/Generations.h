// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "platform/FileSystem.h"
#include "store/GenerationName.h"

namespace tallbook {

/// The generations of the accounts file, in a private folder beside it. Nothing about them is
/// remembered in the process: others keep and remove generations as well.
class Generations {
 public:
  /// Who is about to replace the file.
  enum class Cause {
    Save,      ///< of what a burst of saves replaces within a minute, the first is kept
    Restore,   ///< kept whatever was kept before, so that going back can be undone
    Migration  ///< kept on its own, whatever was kept before or will be after it
  };

  /// Of the accounts file in this folder.
  explicit Generations(Folder& folder) : _folder(folder) {}

  /// Keeps the version `version` of the accounts file if it is time to, and removes the oldest
  /// beyond the preferred number. What could not be done, on one line; else empty.
  std::string keep(const FileVersion& version, Cause cause);

  /// Their folder; null, with `error`, where none was ever kept.
  std::unique_ptr<Folder> open(std::error_code& error) const;
  /// What lies in that folder, the newest first.
  static std::vector<GenerationName> in(const Folder& folder, std::error_code& error);

 private:
  std::unique_ptr<Folder> make(std::error_code& error);
  /// Adds the new generation to `names`, those that are there.
  std::error_code keepIn(Folder& folder, std::vector<GenerationName>& names,
                         GenerationName::Time now, const FileVersion& version, Cause cause);

  Folder& _folder;
};

}  // namespace tallbook
