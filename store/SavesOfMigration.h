// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <vector>

#include "tallbook/Value.h"

#include "store/AccountsFile.h"

namespace tallbook {

/// What a store inside of a migration knows of the file that it saves several times.
struct SavesOfMigration {
  explicit SavesOfMigration(AccountsFile read) : file(std::move(read)) {}

  /// Why the version has to be kept before it is replaced; nothing for one that is kept already or
  /// that a save of this store has made, which is half a migration.
  std::optional<Generations::Cause> causeToKeep(const AccountsFile& replaced) const {
    if (replaced.version() == known) return std::nullopt;
    return Generations::Cause::Migration;
  }

  AccountsFile file;           ///< of which the store was made
  FileVersion known;           ///< the last version that was kept or written
  std::vector<Value> records;  ///< as they were last written
};

}  // namespace tallbook
