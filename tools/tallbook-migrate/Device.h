#pragma once

#include <string>

namespace tallbook::migrate {

/// Where a migration finds what it reads, as the library tells it for the configured root.
struct DevicePaths {
  std::string root;        ///< empty for the running system
  std::string home;        ///< of the account "mobile"
  std::string sharedHome;  ///< of the accounts file and its copy put aside
  std::string accounts, copyOfAccounts;
};

DevicePaths pathsOfDevice(const std::string& root);

/// Throws Failure where a look tells that the caller cannot replace the accounts file.
void requireReplaceable(const DevicePaths& device);

/// Makes the folder for the copy put aside where there is none, for the owner of the folder above.
/// That it cannot be made is only noted.
void makeFolderForCopy(const DevicePaths& device);

}  // namespace tallbook::migrate
