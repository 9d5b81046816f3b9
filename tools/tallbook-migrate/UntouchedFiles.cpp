#include "tools/tallbook-migrate/UntouchedFiles.h"

#include <array>
#include <cerrno>
#include <dirent.h>
// Only the system's own calls can leave access times as they are, and make a pipe.
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tallbook::migrate {
namespace {

namespace fs = std::filesystem;

// The library reads no longer file.
constexpr off_t kLongestRead = off_t{1} << 30;

class Descriptor {
 public:
  Descriptor(const std::string& path, int flags)
      : _number(::open(path.c_str(), flags | O_NOATIME | O_CLOEXEC)) {
    // Others than the owner may not ask for that.
    if (_number < 0 && errno == EPERM) _number = ::open(path.c_str(), flags | O_CLOEXEC);
  }
  ~Descriptor() {
    if (_number >= 0) ::close(_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return _number; }
  int release() { return std::exchange(_number, -1); }

 private:
  int _number;
};

[[noreturn]] void fail(const std::string& path, int error) {
  throw fs::filesystem_error("copying", path, std::error_code(error, std::generic_category()));
}

}  // namespace

void copyUntouched(const std::string& from, const std::string& to) {
  std::ofstream copy(to, std::ios::binary);
  if (!copy) fail(to, errno);
  const Descriptor file(from, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
    copy.close();
    return fs::permissions(to, fs::perms::none);
  }
  if (status.st_size > kLongestRead) {
    copy.close();
    return fs::resize_file(to, static_cast<std::uintmax_t>(status.st_size));
  }
  std::array<char, 1 << 16> buffer;
  for (;;) {
    const ssize_t got = ::read(file.number(), buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fail(from, errno);
    if (got == 0) break;
    copy.write(buffer.data(), got);
  }
  if (!copy.flush()) fail(to, errno);
}

std::vector<std::string> namesInUntouched(const std::string& folder) {
  Descriptor opened(folder, O_RDONLY | O_DIRECTORY);
  std::vector<std::string> names;
  DIR* const stream = opened.number() < 0 ? nullptr : ::fdopendir(opened.number());
  if (!stream) return names;
  opened.release();
  while (const dirent* entry = ::readdir(stream)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  ::closedir(stream);
  return names;
}

void makePipe(const std::string& path) {
  if (::mkfifo(path.c_str(), 0600) != 0) fail(path, errno);
}

}  // namespace tallbook::migrate
