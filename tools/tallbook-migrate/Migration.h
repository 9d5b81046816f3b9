// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "tallbook/DataMigrator.h"

#include "tools/tallbook-migrate/Story.h"

namespace tallbook::migrate {

/// What the caller lets a migration do.
struct Consent {
  bool replaceUnreadable = false;  ///< put a file in the place of one that is no accounts file
  bool withoutCopy = false;        ///< go on where the file before can be kept nowhere
};

/// A migration that ran.
struct Migration {
  explicit Migration(const Consent& consent) : story(consent.withoutCopy) {}

  Story story;
  std::string problem;  ///< why it did not answer that it succeeded; empty where it did
};

/// Runs the migration on the process's device. Throws Failure for an accounts file that could not
/// be read, and for one that is none unless it may be replaced: the save keeps that one beside the
/// new file.
Migration migrateDevice(DataMigrator& migrator, const Consent& consent);

}  // namespace tallbook::migrate
