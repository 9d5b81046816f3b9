// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tallbook {

/// What tells a file from those that were or will be at its place: two looks that give one version
/// saw one file, with one content, as long as its writers use `NewFile::finish`. Comes with no
/// inode where there is no file.
struct FileVersion {
  std::uint64_t inode = 0;
  std::int64_t modifiedSeconds = 0;      ///< since 1970-01-01T00:00:00Z
  std::int64_t modifiedNanoseconds = 0;  ///< 0 to 999,999,999
  std::uint64_t size = 0;                ///< bytes

  explicit operator bool() const noexcept { return inode != 0; }
  friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

enum class FileKind { Nothing, Regular, Directory, Link, Other };

/// What lies under a name, a link itself and not what it leads to.
struct FileLook {
  FileKind kind = FileKind::Nothing;
  FileVersion version;
};

/// A file as it was read, through one descriptor.
struct FileContent {
  std::error_code error;  ///< why there are no bytes; "no such file" for a link to nothing as well
  std::string bytes;
  FileVersion version;               ///< of what lies under the name
  std::shared_ptr<const void> held;  ///< while it lives, no other file gets the version's inode
};

/// A file that is being made: its owner alone may read and write it.
class NewFile {
 public:
  virtual ~NewFile() = default;

  /// Appends the bytes.
  virtual std::error_code write(std::string_view bytes) = 0;
  /// Gives the file to the account `owner` and the group `group`, both by name. An unknown name is
  /// an invalid argument, on a device `unknownAccount` or `unknownGroup`.
  virtual std::error_code giveTo(const std::string& owner, const std::string& group) = 0;
  /// Dates the file after the one that it is to replace, flushes it to the disk and closes it. The
  /// dates along a chain of replacements only grow, so that no version comes twice.
  virtual std::error_code finish(const FileVersion& replaced = {}) = 0;
};

/// An open folder. Every operation is on a name in it, so that nobody can put another folder, or
/// a link, in the way between two of them. A failed operation leaves what was there before.
class Folder {
 public:
  virtual ~Folder() = default;

  /// The content of a regular file, of one that a link leads to as well.
  virtual FileContent read(const std::string& name) const = 0;
  virtual FileLook look(const std::string& name, std::error_code& error) const = 0;
  /// The names of all that lies in the folder, in no order.
  virtual std::vector<std::string> names(std::error_code& error) const = 0;
  /// A name that nothing here has, or had, or will have otherwise.
  virtual std::string freshName() const = 0;

  /// A new, empty file; null, with `error`, where something has the name, a link included.
  virtual std::unique_ptr<NewFile> create(const std::string& name, std::error_code& error) = 0;
  /// Removes a file or a link, never a folder (an error).
  virtual std::error_code remove(const std::string& name) = 0;
  /// Puts the file `from` in the place of `to`, whole: at every moment `to` is the old or the new
  /// file.
  virtual std::error_code rename(const std::string& from, const std::string& to) = 0;
  /// The same where nothing has the name `to`; else an error.
  virtual std::error_code renameToNew(const std::string& from, const std::string& to) = 0;
  /// A second name, in the folder `to` of the same file system, for the file of that name.
  virtual std::error_code link(const std::string& name, Folder& to, const std::string& newName) = 0;

  /// A symbolic link that says `text`; an error where something has the name.
  virtual std::error_code makeNote(const std::string& name, const std::string& text) = 0;
  /// What the symbolic link says; empty, with `error`, where there is none.
  virtual std::string noteText(const std::string& name, std::error_code& error) const = 0;

  /// The folder of that name, no link; null, with `error`, where there is none.
  virtual std::unique_ptr<Folder> folder(const std::string& name, std::error_code& error) = 0;
  /// Makes a folder for the account `owner` and its group `group` alone.
  virtual std::error_code makeFolder(const std::string& name, const std::string& owner,
                                     const std::string& group) = 0;
  /// Flushes the folder's entries to the disk, so that a rename in it outlives a power loss.
  virtual std::error_code flush() = 0;
};

/// Files, as the accounts file, the legacy files and the migration's logs need them. Paths are
/// absolute. Every failure is an error code of the operating system, and never the same as
/// "nothing is there".
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  /// The most bytes that are read; a larger file, and one that grows past it while it is read, is
  /// an error. No property list of a device comes near, and a sparse file of terabytes must not
  /// exhaust the memory.
  static constexpr std::size_t kLargestFile = std::size_t{1} << 30;

  /// The whole content of a regular file; an error, and an empty answer, for everything else.
  virtual std::string readFile(const std::string& path, std::error_code& error) const = 0;
  /// Null, with `error`, where there is no folder.
  virtual std::unique_ptr<Folder> openFolder(const std::string& path,
                                             std::error_code& error) const = 0;
  /// Makes the folder and the missing ones above it, with exactly the permission bits `mode` for
  /// those that it makes. A folder that exists is no error.
  virtual std::error_code createDirectories(const std::string& path, unsigned mode) = 0;

  // For a single operation, the folder opened for it.

  /// Whether anything is there, a folder or a link to nothing included. Nothing is in a folder that
  /// is not there. False, with `error`, where nobody can tell.
  bool exists(const std::string& path, std::error_code& error) const;
  /// Removes a file or a link, never a folder (an error).
  std::error_code remove(const std::string& path);
  /// A new file of these bytes, flushed, that its owner alone may read and write. Something at
  /// `path`, a link included, is an error. No file stays behind a failure.
  std::error_code createFile(const std::string& path, std::string_view bytes);
  /// The same in the place of what is at `path`, which is the old or the new file at every moment.
  std::error_code replaceFile(const std::string& path, std::string_view bytes);
};

/// A path's folder and its last name.
struct SplitPath {
  explicit SplitPath(const std::string& path);

  std::string folder;
  std::string name;
};

/// A name that nothing has, and whether a name is one of these.
std::string freshFileName();
bool isFreshFileName(std::string_view name);

/// Makes the file under the name, as `FileSystem::createFile` does.
std::error_code createFile(Folder& folder, const std::string& name, std::string_view bytes);

}  // namespace tallbook
