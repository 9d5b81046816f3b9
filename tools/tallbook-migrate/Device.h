#pragma once

#include <string>

namespace tallbook::migrate {

/// Where a migration finds what it reads, as the library tells it for the configured root.
struct DevicePaths {
  std::string root;  ///< empty for the running system
  std::string home;  ///< of the account "mobile"
  std::string accounts, legacyMail, legacyExchange;
};

DevicePaths pathsOfDevice(const std::string& root);

}  // namespace tallbook::migrate
