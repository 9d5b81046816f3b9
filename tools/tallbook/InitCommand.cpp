#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "tallbook/BasicAccount.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/MobileUser.h"
#include "tools/tallbook/Commands.h"

namespace tallbook::tool {
namespace {

namespace fs = std::filesystem;

void makeTree(const fs::path& root) {
  for (const char* folder : {"tmp", "usr/share/tallbook", "var/mobile/Library/Preferences",
                             "var/mobile/Library/Mail", "var/mobile/Library/Logs"}) {
    fs::create_directories(root / folder);
  }
  fs::permissions(root / "tmp", fs::perms::all | fs::perms::sticky_bit);
  makeCallerMobile(root);
}

/// The file that the library of this process was loaded from.
fs::path runningLibrary() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    const auto path = line.find('/');
    if (path != std::string::npos && line.find("/libtallbook.so", path) != std::string::npos) {
      return line.substr(path);
    }
  }
  throw Failure(ExitCode::NotSaved, "/proc does not tell where the library is; mount it");
}

/// Puts a link to the library where the creators information looks for the class of the
/// device-local account, so that its full account can be made on the new device.
void linkLibrary(const fs::path& root) {
  const DictionaryRef creators = BasicAccount::_creatorsInfo();
  const ArrayRef entries = creators ? (*creators)[kOnMyDeviceAccountType].array() : nullptr;
  if (!entries || entries->empty()) return;
  const DictionaryRef entry = (*entries)[0].dictionary();
  const DictionaryRef description = entry ? (*entry)["Description"].dictionary() : nullptr;
  const String framework = description ? (*description)["Framework"].string() : nullptr;
  if (!framework) return;
  const fs::path link = root / fs::path(framework.view()).relative_path();
  fs::create_directories(link.parent_path());
  fs::create_symlink(fs::canonical(runningLibrary()), link);
}

}  // namespace

ExitCode init(const std::string& folder) {
  try {
    if (fs::exists(folder) && (!fs::is_directory(folder) || !fs::is_empty(folder))) {
      throw Failure(ExitCode::Usage,
                    folder + " is not empty; give the name of a new or an empty folder");
    }
    makeTree(folder);
    linkLibrary(folder);
  } catch (const fs::filesystem_error& error) {
    throw Failure(ExitCode::NotSaved, folder + " cannot be made a device tree: " +
                                          error.code().message() + "; choose another folder");
  }
  std::cout << "An empty device. Use it with: tallbook --root " << folder << " list\n";
  return ExitCode::Done;
}

}  // namespace tallbook::tool
