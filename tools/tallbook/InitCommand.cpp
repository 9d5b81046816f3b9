#include <filesystem>
#include <iostream>
#include <string>

#include "tools/common/MobileUser.h"
#include "tools/common/Program.h"
#include "tools/tallbook/Commands.h"

namespace tallbook::tool {
namespace {

namespace fs = std::filesystem;

void makeTree(const fs::path& root) {
  for (const char* folder : {"tmp", "usr/share/tallbook", "var/mobile/Library/Preferences",
                             "var/mobile/Library/Mail", "var/mobile/Library/Logs/Dorvix"}) {
    fs::create_directories(root / folder);
  }
  fs::permissions(root / "tmp", fs::perms::all | fs::perms::sticky_bit);
  makeCallerMobile(root);
}

}  // namespace

ExitCode init(const std::string& folder) {
  try {
    if (fs::exists(folder) && (!fs::is_directory(folder) || !fs::is_empty(folder))) {
      throw Failure(ExitCode::Usage,
                    folder + " is not empty; give the name of a new or an empty folder");
    }
    makeTree(folder);
  } catch (const fs::filesystem_error& error) {
    throw Failure(ExitCode::NotSaved, folder + " cannot be made a device tree: " +
                                          error.code().message() + "; choose another folder");
  }
  failFromHereOnWith(static_cast<int>(ExitCode::NotPrinted));
  std::cout << "An empty device. Use it with: tallbook --root " << folder << " list\n";
  return ExitCode::Done;
}

}  // namespace tallbook::tool
