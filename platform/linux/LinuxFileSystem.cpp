#include "platform/linux/LinuxFileSystem.h"

#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/FileDescriptor.h"

namespace tallbook {
namespace {

std::error_code outcome(int result) {
  return result == 0 ? std::error_code() : lastSystemError();
}

std::error_code makeDirectory(const std::string& path, unsigned mode) {
  if (::mkdir(path.c_str(), static_cast<mode_t>(mode & 0700)) != 0) return lastSystemError();
  // The process's mask must not take bits away; the folder is opened so that they go to the one
  // that was made, whatever lies at its path by now.
  std::error_code error;
  const auto made = FileDescriptor::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW, 0, error);
  return made ? outcome(::fchmod(made.get(), static_cast<mode_t>(mode))) : error;
}

std::error_code writeAndFlush(FileDescriptor file, std::string_view bytes) {
  if (const auto error = file.write(bytes)) return error;
  if (const auto error = file.flush()) return error;
  return file.close();
}

std::string randomName() {
  std::random_device random;
  char name[32];
  std::snprintf(name, sizeof name, ".tallbook-%08x%08x", random(), random());
  return name;
}

}  // namespace

std::string LinuxFileSystem::readFile(const std::string& path, std::error_code& error) const {
  return readRegularFile(path, error);
}

bool LinuxFileSystem::exists(const std::string& path) const {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

bool LinuxFileSystem::isDirectory(const std::string& path) const {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::error_code LinuxFileSystem::remove(const std::string& path) {
  return outcome(::unlink(path.c_str()));
}

std::error_code LinuxFileSystem::copyFile(const std::string& from, const std::string& to) {
  std::error_code error;
  const std::string bytes = readFile(from, error);
  return error ? error : createFile(to, bytes);
}

std::error_code LinuxFileSystem::createDirectories(const std::string& path, unsigned mode) {
  for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string part = path.substr(0, slash);
    if (!isDirectory(part)) {
      const auto error = makeDirectory(part, mode);
      // Somebody else may have made it meanwhile.
      if (error && !isDirectory(part)) {
        return error == std::errc::file_exists ? make_error_code(std::errc::not_a_directory)
                                               : error;
      }
    }
    if (slash == std::string::npos) return {};
  }
}

std::optional<std::string> LinuxFileSystem::temporaryPathIn(const std::string& directory) {
  if (!isDirectory(directory)) return std::nullopt;
  if (::faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) != 0) return std::nullopt;
  std::string path;
  do {
    path = directory + "/" + randomName();
  } while (exists(path));
  return path;
}

std::error_code LinuxFileSystem::createFile(const std::string& path, std::string_view bytes) {
  std::error_code error;
  auto file = FileDescriptor::open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW,
                                   S_IRUSR | S_IWUSR, error);
  if (!file) return error;
  error = writeAndFlush(std::move(file), bytes);
  if (error) ::unlink(path.c_str());
  return error;
}

std::error_code LinuxFileSystem::setOwner(const std::string& path, const std::string& owner,
                                          const std::string& group) {
  const auto user = _accounts.userNamed(owner);
  const auto userGroup = _accounts.groupNamed(group);
  if (!user || !userGroup) return make_error_code(std::errc::invalid_argument);
  return outcome(::lchown(path.c_str(), *user, *userGroup));
}

std::error_code LinuxFileSystem::rename(const std::string& from, const std::string& to) {
  return outcome(::rename(from.c_str(), to.c_str()));
}

std::error_code LinuxFileSystem::flushDirectory(const std::string& path) {
  std::error_code error;
  const auto directory = FileDescriptor::open(path, O_RDONLY | O_DIRECTORY, 0, error);
  if (!directory) return error;
  error = directory.flush();
  // Said by file systems that have nothing to flush for a directory.
  return error == std::errc::invalid_argument ? std::error_code() : error;
}

}  // namespace tallbook
