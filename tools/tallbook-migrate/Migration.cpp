#include "tools/tallbook-migrate/Migration.h"

#include <filesystem>

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "tools/common/AccountsFile.h"
#include "tools/common/Output.h"
#include "tools/tallbook-migrate/Device.h"
#include "tools/tallbook-migrate/HostLock.h"
#include "tools/tallbook-migrate/PrivateCopy.h"

namespace tallbook::migrate {
namespace {

using tool::AccountsFile;
using tool::note;

Migration run(DataMigrator& migrator, const DevicePaths& paths, const Consent& consent) {
  Migration migration(consent);
  migrator.setObserver(&migration.story);
  makeFolderForCopy(paths);
  note("migrating \"" + migrator.dataClassName().str() + "\"");
  try {
    migration.isAnswered = migrator.performMigration();
  } catch (const InternalConsistencyFailure& failure) {
    migration.failure = failure.what();
  }
  migrator.setObserver(nullptr);
  return migration;
}

void requireUsable(const AccountsFile& file, const Consent& consent) {
  const bool isMalformed = file.state.kind == AccountsFileState::Kind::Malformed;
  if (!file.isUnusable() || (isMalformed && consent.replaceUnreadable)) return;
  throw unusable(file,
                 "the migration would start without its accounts and put another file in its "
                 "place; restore it from a copy, or repeat the command with --replace-unreadable");
}

}  // namespace

Migration migrateDevice(DataMigrator& migrator, const HostOptions& host, const Consent& consent) {
  configureHost(host);
  const DevicePaths paths = pathsOfDevice(host.root);
  requireReplaceable(paths);
  const HostLock lock(paths.root, std::filesystem::path(paths.accounts).parent_path().string());
  // Another program may be migrating without such a lock. Where the migration's own cannot be made,
  // the migration itself will answer NO.
  static_cast<void>(AccountsManager::waitForMigrationToFinish(tool::noteHolderOfMigrationLock));
  requireUsable(tool::readAccountsFile(), consent);
  return run(migrator, paths, consent);
}

Migration previewMigration(DataMigrator& migrator, const HostOptions& host,
                           const Consent& consent) {
  configureHost(host);
  const DevicePaths device = pathsOfDevice(host.root);
  requireReplaceable(device);
  const PrivateCopy copy(device);
  HostOptions ofCopy = host;
  ofCopy.root = copy.root();
  configureHost(ofCopy);
  AccountsFile file = tool::readAccountsFile();
  file.path = device.accounts;
  requireUsable(file, consent);
  if (file.isUnusable()) note("the unreadable file would be kept beside " + device.accounts);
  return run(migrator, pathsOfDevice(ofCopy.root), consent);
}

}  // namespace tallbook::migrate
