#pragma once

#include "platform/FileSystem.h"
#include "platform/linux/AccountDatabase.h"

namespace tallbook {

/// The kernel's files. Nothing is ever made or given away through a symbolic link.
class LinuxFileSystem final : public FileSystem {
 public:
  /// Account names are those of the device below `root`.
  explicit LinuxFileSystem(std::string root) : _accounts(std::move(root)) {}

  std::string readFile(const std::string& path, std::error_code& error) const override;
  bool exists(const std::string& path) const override;
  bool isDirectory(const std::string& path) const override;
  std::error_code remove(const std::string& path) override;
  std::error_code copyFile(const std::string& from, const std::string& to) override;
  std::error_code createDirectories(const std::string& path, unsigned mode) override;
  std::optional<std::string> temporaryPathIn(const std::string& directory) override;
  std::error_code createFile(const std::string& path, std::string_view bytes) override;
  std::error_code setOwner(const std::string& path, const std::string& owner,
                           const std::string& group) override;
  std::error_code rename(const std::string& from, const std::string& to) override;
  std::error_code flushDirectory(const std::string& path) override;

 private:
  AccountDatabase _accounts;
};

}  // namespace tallbook
