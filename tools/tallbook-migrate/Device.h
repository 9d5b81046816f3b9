#pragma once

#include <string>

#include "tools/common/AccountsFile.h"
#include "tools/tallbook-migrate/LegacyFile.h"

namespace tallbook::migrate {

/// Where a migration finds what it reads, as the library tells it for the configured root.
struct DevicePaths {
  std::string root;  ///< empty for the running system
  std::string home;  ///< of the account "mobile"
  std::string accounts, legacyMail, legacyExchange;
  std::string removalSentinel;  ///< there while legacy files are being removed
};

DevicePaths pathsOfDevice(const std::string& root);

/// The accounts of a device at one moment, in all three files.
struct DeviceState {
  tool::AccountsFile accounts;
  LegacyFile legacyMail, legacyExchange;
  bool isRemovalInterrupted = false;
};

DeviceState stateOfDevice(const DevicePaths& paths);

}  // namespace tallbook::migrate
