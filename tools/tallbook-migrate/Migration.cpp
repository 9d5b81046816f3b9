// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook-migrate/Migration.h"

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/AccountsFile.h"
#include "tools/common/Output.h"

namespace tallbook::migrate {
namespace {

void requireUsable(const tool::AccountsFile& file, const Consent& consent) {
  if (!file.isUnusable()) return;
  const bool isMalformed = file.state.kind == AccountsFileState::Kind::Malformed;
  if (!isMalformed || !consent.replaceUnreadable) {
    throw tool::unusable(
        file,
        "the migration would start without its accounts and put another file in its place; restore "
        "it from a copy, or repeat the command with --replace-unreadable");
  }
  tool::note("the unreadable file is kept beside " + file.path);
}

}  // namespace

Migration migrateDevice(DataMigrator& migrator, const Consent& consent) {
  // Only to say whom it waits for. Where the lock cannot be made, the migration itself answers NO.
  static_cast<void>(AccountsManager::waitForMigrationToFinish(tool::noteHolderOfMigrationLock));
  requireUsable(tool::readAccountsFile(), consent);
  Migration migration(consent);
  migrator.setObserver(&migration.story);
  migrator.prepareDevice();
  try {
    if (!migrator.performMigration()) {
      migration.problem =
          std::string(
              "the migration answered NO; see the messages above, and --verbose. Without "
              "any, its lock could not be made: is ") +
          kAccountMigrationLockFilename + " below the root a file?";
    }
  } catch (const InternalConsistencyFailure& failure) {
    migration.problem =
        std::string("the installation is broken: ") + failure.what() + "; reinstall it";
  }
  migrator.setObserver(nullptr);
  return migration;
}

}  // namespace tallbook::migrate
