#include "platform/linux/LockHolder.h"

#include <fstream>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tallbook {
namespace {

/// The file as /proc/locks names it: "08:01:1234", the device in hexadecimal.
std::string nameInTable(const struct stat& status) {
  std::ostringstream name;
  name << std::hex;
  name.fill('0');
  name.width(2);
  name << major(status.st_dev) << ':';
  name.width(2);
  name << minor(status.st_dev) << ':' << std::dec << status.st_ino;
  return name.str();
}

/// A line is "1: FLOCK  ADVISORY  WRITE 4711 08:01:1234 0 EOF"; that of a process which waits has
/// "->" after the number, and so another second word.
std::optional<long> holderInTable(std::istream& table, const std::string& file) {
  for (std::string line; std::getline(table, line);) {
    std::istringstream words(line);
    std::string number, kind, strictness, access, place;
    long process = 0;
    if (!(words >> number >> kind >> strictness >> access >> process >> place)) continue;
    // Processes outside the container have the number 0, or -1.
    if (kind == "FLOCK" && place == file && process > 0) return process;
  }
  return std::nullopt;
}

}  // namespace

std::string holderOfLockOn(const FileDescriptor& file) {
  struct stat status {};
  std::ifstream table("/proc/locks");
  const auto process =
      ::fstat(file.get(), &status) == 0 ? holderInTable(table, nameInTable(status)) : std::nullopt;
  if (!process) return "a process that the kernel does not name";
  std::string text = "process " + std::to_string(*process);
  std::string program;
  if (std::getline(std::ifstream("/proc/" + std::to_string(*process) + "/comm"), program)) {
    text += " (" + program + ")";
  }
  return text;
}

}  // namespace tallbook
