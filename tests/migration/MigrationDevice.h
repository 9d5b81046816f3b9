// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "migration/AccountsDataMigrator.h"
#include "tests/migration/Matching.h"
#include "tests/support/Device.h"

namespace tallbook {

/// A device to be migrated, described by a property list. `Accounts File`, `Legacy Mail` and
/// `Legacy Exchange` are what the file holds; absent, there is none. `CPUArchitecture` and `Google
/// Mail` are what the device tells of itself, and `Sync Sources` has, for a data type, an array of
/// sources or the text of an error.
class MigrationDevice : public ThrowAwayDevice {
 protected:
  MigrationDevice();

  /// A property list below this folder's `data`; throws where there is none.
  static Value data(const std::string& name);

  /// Makes the device anew from its description, with a fresh platform.
  void arrange(const DictionaryRef& device);
  /// Lets the fresh platform tell the description's facts.
  void tellFacts(const DictionaryRef& device);
  /// Runs a migration as a new process would.
  bool migrate();

  std::string sentinelPath() const { return preferencesFolder() + "/.removingOldAccounts"; }
  std::string copyPath() const { return home() + "/Library/Logs/Dorvix/com.orvane.tallbook.plist"; }
  std::string lockPath() const { return path("/tmp/AccountMigrationInProgress"); }
  /// Whether another process could take the migration lock at once.
  bool isLockFree() const;
  /// The bytes of the kept generations.
  std::vector<std::string> generations() const;
  std::vector<std::string> consoleLines() { return platform().console.lines; }
};

}  // namespace tallbook
