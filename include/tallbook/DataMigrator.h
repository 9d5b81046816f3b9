// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "tallbook/Export.h"
#include "tallbook/String.h"

/// @file
/// What a migration host asks for.

namespace tallbook {

class MigrationObserver;

/// What a data-migration host asks of the principal class of a plug-in. A migrator is thread-bound.
class TALLBOOK_EXPORT DataMigrator {
 public:
  virtual ~DataMigrator();

  /// Names the kind of data that it migrates.
  virtual String dataClassName() const = 0;
  /// The observer, which outlives the migration, hears of what the migration does, on its thread;
  /// null for nobody. A migrator that tells nothing ignores it.
  virtual void setObserver([[maybe_unused]] MigrationObserver* observer) {}
  /// Whether there is something to migrate. True where the system does not let it be told.
  virtual bool isNeeded() { return true; }
  /// Makes what the migration wants to find on the device and does not make itself. That it cannot
  /// be made is only logged. A host calls it before the migration.
  virtual void prepareDevice() {}
  /// Runs the migration; true when it succeeded or had nothing to do.
  virtual bool performMigration() = 0;
};

}  // namespace tallbook

/// Whether Gmail is called "Google Mail" in the device's region; asked once in a process.
extern "C" TALLBOOK_EXPORT bool _UseGoogleMail();
