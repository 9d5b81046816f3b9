#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "tallbook/BasicAccount.h"
#include "tallbook/Vocabulary.h"

#include "tools/tallbook/Commands.h"

namespace tallbook::tool {
namespace {

namespace fs = std::filesystem;

/// The effective number under "Uid:" or "Gid:" of the running process.
std::string ownNumber(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (!line.starts_with(name)) continue;
    std::istringstream numbers(line.substr(name.size()));
    std::string real;
    std::string effective;
    if (numbers >> real >> effective) return effective;
  }
  throw Failure(ExitCode::NotSaved, "/proc does not tell who the calling user is; mount it");
}

void write(const fs::path& path, const std::string& text) {
  std::ofstream stream(path);
  stream << text;
  if (!stream.flush()) {
    throw Failure(ExitCode::NotSaved, path.string() + " cannot be written; choose another folder");
  }
}

void makeTree(const fs::path& root) {
  for (const char* folder : {"etc", "tmp", "usr/share/tallbook", "var/mobile/Library/Preferences",
                             "var/mobile/Library/Mail", "var/mobile/Library/Logs"}) {
    fs::create_directories(root / folder);
  }
  fs::permissions(root / "tmp", fs::perms::all | fs::perms::sticky_bit);
  const std::string user = ownNumber("Uid:");
  const std::string group = ownNumber("Gid:");
  write(root / "etc/passwd", "mobile:x:" + user + ":" + group + ":Mobile:/var/mobile:/bin/sh\n");
  write(root / "etc/group", "mobile:x:" + group + ":\n");
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
