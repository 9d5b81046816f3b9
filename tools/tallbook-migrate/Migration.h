#pragma once

#include <string>

#include "tallbook/DataMigrator.h"
#include "tallbook/Host.h"

#include "tools/tallbook-migrate/Device.h"

namespace tallbook::migrate {

/// A migration that ran, and the device around it.
struct Migration {
  DeviceState before, after;
  bool isAnswered = false;  ///< whether it answered that it succeeded
  std::string failure;      ///< why it gave no answer at all; empty where it did
  bool isSaved = false;     ///< whether the accounts file was replaced
};

/// Runs the migration on the device of `host`, once no other host works on it. Throws Failure for
/// an accounts file that could not be read, and for one that is none unless it may be replaced: the
/// save keeps that one beside the new file.
Migration migrateDevice(DataMigrator& migrator, const HostOptions& host, bool replaceUnreadable);

/// Runs the migration on a private copy of that device. Waits for nobody, and tells nobody.
Migration previewMigration(DataMigrator& migrator, const HostOptions& host, bool replaceUnreadable);

}  // namespace tallbook::migrate
