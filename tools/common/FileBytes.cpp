#include "tools/common/FileBytes.h"

#include <cerrno>
// Only the system's own calls tell of an open file what it is.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallbook::tool {
namespace {

// The library reads no longer file.
constexpr std::size_t kLongestRead = std::size_t{1} << 30;

std::error_code lastError() {
  return {errno, std::generic_category()};
}

std::error_code whyNotReadable(int file) {
  struct stat status {};
  if (::fstat(file, &status) != 0) return lastError();
  if (S_ISDIR(status.st_mode)) return make_error_code(std::errc::is_a_directory);
  if (!S_ISREG(status.st_mode)) return make_error_code(std::errc::not_supported);
  if (static_cast<std::size_t>(status.st_size) > kLongestRead) {
    return make_error_code(std::errc::file_too_large);
  }
  return {};
}

std::string readToEnd(int file, std::error_code& error) {
  constexpr std::size_t kPiece = std::size_t{1} << 16;
  std::string bytes;
  for (;;) {
    const std::size_t used = bytes.size();
    bytes.resize(used + kPiece);
    const ssize_t got = ::read(file, bytes.data() + used, kPiece);
    if (got < 0) error = lastError();
    bytes.resize(used + static_cast<std::size_t>(got > 0 ? got : 0));
    if (got == 0 || (got < 0 && error != std::errc::interrupted)) break;
    error.clear();
    if (bytes.size() > kLongestRead) {
      error = make_error_code(std::errc::file_too_large);
      break;
    }
  }
  return error ? std::string() : bytes;
}

}  // namespace

std::string bytesOfFile(const std::string& path, std::error_code& error) {
  error.clear();
  // Not waiting, since it may be a pipe that nobody writes to.
  int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  // Another program's lease on a regular file: it is given some seconds to end it.
  if (file < 0 && errno == EWOULDBLOCK) {
    file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  }
  if (file < 0) {
    error = lastError();
    return {};
  }
  error = whyNotReadable(file);
  std::string bytes = error ? std::string() : readToEnd(file, error);
  ::close(file);
  return bytes;
}

std::string bytesOfStandardInput(std::error_code& error) {
  error.clear();
  return readToEnd(STDIN_FILENO, error);
}

std::string adviceOnRefusal(const std::error_code& error) {
  const bool isRefused =
      error == std::errc::permission_denied || error == std::errc::operation_not_permitted;
  return isRefused ? "; run as mobile" : "";
}

std::string adviceOnUnreadable(const std::error_code& error) {
  if (const std::string advice = adviceOnRefusal(error); !advice.empty()) return advice.substr(2);
  if (error == std::errc::is_a_directory || error == std::errc::not_supported) {
    return "move away what lies there, it is no regular file";
  }
  if (error == std::errc::file_too_large) return "restore it from a copy";
  return "repeat the command, and restore the file from a copy where that does not help";
}

}  // namespace tallbook::tool
