#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tallbook {

/// Files, as the accounts file, the legacy files and the migration's logs need them. Paths are
/// absolute. Every failure is an error code of the operating system; a failed operation leaves
/// what was there before.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  /// The most bytes that `readFile` reads; a larger file is an error. No property list of a device
  /// comes near, and a sparse file of terabytes must not exhaust the memory.
  static constexpr std::size_t kLargestFile = std::size_t{1} << 30;

  /// The whole content of a regular file; an error, and an empty answer, for everything else.
  virtual std::string readFile(const std::string& path, std::error_code& error) const = 0;
  /// Whether anything is there, a directory or a dangling link included.
  virtual bool exists(const std::string& path) const = 0;
  virtual bool isDirectory(const std::string& path) const = 0;

  /// Removes a file or a link, never a directory (an error).
  virtual std::error_code remove(const std::string& path) = 0;
  /// Copies a regular file's bytes; what is at `to` already is an error.
  virtual std::error_code copyFile(const std::string& from, const std::string& to) = 0;
  /// Makes the directory and the missing ones above it, with exactly the permission bits `mode`
  /// for those that it makes. A directory that exists is no error.
  virtual std::error_code createDirectories(const std::string& path, unsigned mode) = 0;

  /// A fresh path in `directory` at which nothing exists; nullopt when no file can be made there.
  virtual std::optional<std::string> temporaryPathIn(const std::string& directory) = 0;
  /// A new file with these bytes, flushed to the disk, readable and writable by its owner alone.
  /// Something at `path`, a link included, is an error. No file stays behind a failure.
  virtual std::error_code createFile(const std::string& path, std::string_view bytes) = 0;
  /// Gives the file to the account `owner` and the group `group`, both by name; unknown names are
  /// an error.
  virtual std::error_code setOwner(const std::string& path, const std::string& owner,
                                   const std::string& group) = 0;
  /// Puts `from` in the place of `to`, whole: at every moment `to` is the old or the new file.
  virtual std::error_code rename(const std::string& from, const std::string& to) = 0;
  /// Flushes a directory's entries to the disk, so that a rename in it outlives a power loss.
  virtual std::error_code flushDirectory(const std::string& path) = 0;
};

}  // namespace tallbook
