#include "tools/tallbook-migrate/Device.h"

#include <filesystem>

#include "tallbook/AccountsManager.h"

namespace tallbook::migrate {

namespace fs = std::filesystem;

DevicePaths pathsOfDevice(const std::string& root) {
  DevicePaths paths;
  if (!root.empty()) paths.root = fs::absolute(root).lexically_normal().string();
  while (!paths.root.empty() && paths.root.back() == '/') paths.root.pop_back();
  paths.accounts = tallbookAccountsPath();
  paths.legacyMail = mailAccountsPath();
  paths.legacyExchange = syncoraAccountPath();
  // ~/Library/Mail/Accounts.plist
  paths.home = fs::path(paths.legacyMail).parent_path().parent_path().parent_path().string();
  return paths;
}

}  // namespace tallbook::migrate
