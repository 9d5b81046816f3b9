#include "tools/common/MobileUser.h"

#include <fstream>
#include <sstream>
#include <string>

#include "tools/common/Outcome.h"

namespace tallbook::tool {
namespace {

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

void write(const std::filesystem::path& path, const std::string& text) {
  std::ofstream stream(path);
  stream << text;
  if (!stream.flush()) {
    throw Failure(ExitCode::NotSaved, path.string() + " cannot be written; choose another folder");
  }
}

}  // namespace

void makeCallerMobile(const std::filesystem::path& root) {
  const std::string user = ownNumber("Uid:");
  const std::string group = ownNumber("Gid:");
  std::filesystem::create_directories(root / "etc");
  write(root / "etc/passwd", "mobile:x:" + user + ":" + group + ":Mobile:/var/mobile:/bin/sh\n");
  write(root / "etc/group", "mobile:x:" + group + ":\n");
}

}  // namespace tallbook::tool
