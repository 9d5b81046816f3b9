#include "tools/tallbook-migrate/Migration.h"

#include <filesystem>

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "tools/common/Output.h"
#include "tools/tallbook-migrate/HostLock.h"
#include "tools/tallbook-migrate/PrivateCopy.h"

namespace tallbook::migrate {
namespace {

using tool::AccountsFile;
using tool::note;

Migration run(DataMigrator& migrator, const DevicePaths& paths, DeviceState before) {
  Migration migration;
  migration.before = std::move(before);
  const std::string stamp = stampOfFile(paths.accounts);
  note("migrating \"" + migrator.dataClassName().str() + "\"");
  try {
    migration.isAnswered = migrator.performMigration();
  } catch (const InternalConsistencyFailure& failure) {
    migration.failure = failure.what();
  }
  migration.isSaved = stampOfFile(paths.accounts) != stamp;
  migration.after = stateOfDevice(paths);
  return migration;
}

void requireUsable(const AccountsFile& file, bool replaceUnreadable) {
  const bool isMalformed = file.state.kind == AccountsFileState::Kind::Malformed;
  if (!file.isUnusable() || (isMalformed && replaceUnreadable)) return;
  throw unusable(file,
                 "the migration would start without its accounts and put another file in its "
                 "place; restore it from a copy, or repeat the command with --replace-unreadable");
}

}  // namespace

Migration migrateDevice(DataMigrator& migrator, const HostOptions& host, bool replaceUnreadable) {
  configureHost(host);
  const DevicePaths paths = pathsOfDevice(host.root);
  const HostLock lock(paths.root, std::filesystem::path(paths.accounts).parent_path().string());
  // Another program may be migrating without such a lock. Where the migration's own cannot be made,
  // the migration itself will answer NO.
  static_cast<void>(AccountsManager::waitForMigrationToFinish(tool::noteHolderOfMigrationLock));
  DeviceState before = stateOfDevice(paths);
  requireUsable(before.accounts, replaceUnreadable);
  return run(migrator, paths, std::move(before));
}

Migration previewMigration(DataMigrator& migrator, const HostOptions& host,
                           bool replaceUnreadable) {
  configureHost(host);
  const DevicePaths device = pathsOfDevice(host.root);
  const DelayedEnd delayed;
  const PrivateCopy copy(device);
  HostOptions ofCopy = host;
  ofCopy.root = copy.root();
  configureHost(ofCopy);
  const DevicePaths paths = pathsOfDevice(ofCopy.root);
  DeviceState before = stateOfDevice(paths);
  before.accounts.path = device.accounts;
  requireUsable(before.accounts, replaceUnreadable);
  if (before.accounts.isUnusable()) {
    note("the unreadable file would be kept beside " + device.accounts);
  }
  return run(migrator, paths, std::move(before));
}

}  // namespace tallbook::migrate
