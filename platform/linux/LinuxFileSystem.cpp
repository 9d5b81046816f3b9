// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxFileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/LinuxFolder.h"

namespace tallbook {

std::string LinuxFileSystem::readFile(const std::string& path, std::error_code& error) const {
  return _root.readFile(path, error);
}

std::unique_ptr<Folder> LinuxFileSystem::openFolder(const std::string& path,
                                                    std::error_code& error) const {
  FileDescriptor folder = _root.open(path, O_RDONLY | O_DIRECTORY, 0, error);
  if (!folder) return nullptr;
  return std::make_unique<LinuxFolder>(std::move(folder), path, _root, _accounts);
}

std::error_code LinuxFileSystem::createDirectories(const std::string& path, unsigned mode) {
  std::error_code error;
  FileDescriptor above =
      _root.open(_root.path().empty() ? "/" : _root.path(), O_RDONLY | O_DIRECTORY, 0, error);
  if (!above) return error;
  for (std::size_t end = _root.path().size(); end < path.size();) {
    const std::size_t begin = end + 1;
    end = std::min(path.find('/', begin), path.size());
    const std::string part = path.substr(0, end);
    // Whoever else makes it meanwhile is as good; what is there and no folder shows when it is
    // opened.
    FileDescriptor folder = _root.open(part, O_RDONLY | O_DIRECTORY, 0, error);
    if (error == std::errc::no_such_file_or_directory) {
      error = makeFolder(above, path.substr(begin, end - begin), mode);
      if (error && error != std::errc::file_exists) return error;
      folder = _root.open(part, O_RDONLY | O_DIRECTORY, 0, error);
    }
    if (!folder) return error;
    above = std::move(folder);
  }
  return {};
}

}  // namespace tallbook
