// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/MemoryFileSystem.h"

#include <utility>

namespace tallbook {
namespace {

using Disk = MemoryFileSystem::Disk;
using Journal = std::vector<std::string>;
using std::errc;

/// Files of "nobody-has-this-name" cannot be made.
bool isKnown(const std::string& account) {
  return account != "nobody-has-this-name";
}

Disk::Inode* inodeAt(Disk& disk, const std::string& path) {
  const auto at = disk.inodes.find(path);
  return at == disk.inodes.end() ? nullptr : &disk.contents.at(at->second);
}

FileKind kindAt(Disk& disk, const std::string& path) {
  const Disk::Inode* inode = inodeAt(disk, path);
  return inode ? inode->kind : FileKind::Nothing;
}

/// Forgets an inode that no path leads to and nobody has open.
void sweep(Disk& disk, std::uint64_t number) {
  for (const auto& [path, inode] : disk.inodes) {
    if (inode == number) return;
  }
  if (disk.held[number] > 0) return;
  disk.held.erase(number);
  disk.contents.erase(number);
}

std::uint64_t add(Disk& disk, const std::string& path, FileKind kind, std::string bytes) {
  std::uint64_t number = 2;
  while (disk.contents.contains(number)) ++number;
  disk.contents[number] = {kind, std::move(bytes), {}, 0};
  disk.inodes[path] = number;
  return number;
}

void unlink(Disk& disk, const std::string& path) {
  const std::uint64_t number = disk.inodes.at(path);
  disk.inodes.erase(path);
  sweep(disk, number);
}

FileVersion versionOf(std::uint64_t number, const Disk::Inode& inode) {
  return {number, 0, inode.modifiedNanoseconds, inode.bytes.size()};
}

/// The error of using `path` as a file; none for a file or a link.
std::error_code notAFile(Disk& disk, const std::string& path) {
  const FileKind kind = kindAt(disk, path);
  if (kind == FileKind::Nothing) return make_error_code(errc::no_such_file_or_directory);
  return kind == FileKind::Directory ? make_error_code(errc::is_a_directory) : std::error_code();
}

class MemoryNewFile final : public NewFile {
 public:
  MemoryNewFile(Disk& disk, Journal& journal, std::string path, std::uint64_t number)
      : _disk(disk), _journal(journal), _path(std::move(path)), _number(number) {
    ++_disk.held[_number];
  }
  ~MemoryNewFile() override {
    --_disk.held[_number];
    sweep(_disk, _number);
  }

  std::error_code write(std::string_view bytes) override {
    _disk.contents.at(_number).bytes += bytes;
    _journal.push_back("write " + _path);
    return {};
  }
  std::error_code giveTo(const std::string& owner, const std::string& group) override {
    if (!isKnown(owner) || !isKnown(group)) return make_error_code(errc::invalid_argument);
    _disk.contents.at(_number).owner = owner + ":" + group;
    _journal.push_back("giveTo " + _path + " " + owner + ":" + group);
    return {};
  }
  std::error_code finish(const FileVersion& replaced) override {
    if (replaced) {
      _disk.contents.at(_number).modifiedNanoseconds = replaced.modifiedNanoseconds + 1;
    }
    _journal.push_back("finish " + _path);
    return {};
  }

 private:
  Disk& _disk;
  Journal& _journal;
  const std::string _path;
  const std::uint64_t _number;
};

class MemoryFolder final : public Folder {
 public:
  MemoryFolder(Disk& disk, Journal& journal, std::string path)
      : _disk(disk), _journal(journal), _path(std::move(path)) {}

  FileContent read(const std::string& name) const override {
    FileContent content;
    content.error = notAFile(_disk, at(name));
    if (content.error) return content;
    const std::uint64_t number = _disk.inodes.at(at(name));
    const Disk::Inode& inode = _disk.contents.at(number);
    content.version = versionOf(number, inode);
    if (inode.kind == FileKind::Link) {
      content.error = make_error_code(errc::no_such_file_or_directory);
      return content;
    }
    content.bytes = inode.bytes;
    ++_disk.held[number];
    content.held = {nullptr, [disk = &_disk, number](const void*) {
                      --disk->held[number];
                      sweep(*disk, number);
                    }};
    (void)done("read " + at(name));
    return content;
  }
  FileLook look(const std::string& name, std::error_code& error) const override {
    error.clear();
    const FileKind kind = kindAt(_disk, at(name));
    if (kind == FileKind::Nothing) return {};
    const std::uint64_t number = _disk.inodes.at(at(name));
    return {kind, versionOf(number, _disk.contents.at(number))};
  }
  std::vector<std::string> names(std::error_code& error) const override {
    error.clear();
    std::vector<std::string> names;
    const std::string prefix = at("");
    for (const auto& [path, number] : _disk.inodes) {
      if (path.size() <= prefix.size() || !path.starts_with(prefix)) continue;
      const std::string name = path.substr(prefix.size());
      if (name.find('/') == std::string::npos) names.push_back(name);
    }
    return names;
  }
  std::string freshName() const override {
    return ".tallbook-" + std::to_string(++_disk.freshNames);
  }
  std::unique_ptr<NewFile> create(const std::string& name, std::error_code& error) override {
    error = obstacleAt(name);
    if (error) return nullptr;
    const std::uint64_t number = add(_disk, at(name), FileKind::Regular, {});
    error = done("create " + at(name));
    return std::make_unique<MemoryNewFile>(_disk, _journal, at(name), number);
  }
  std::error_code remove(const std::string& name) override {
    if (const auto error = notAFile(_disk, at(name))) return error;
    unlink(_disk, at(name));
    return done("remove " + at(name));
  }
  std::error_code rename(const std::string& from, const std::string& to) override {
    if (const auto error = notAFile(_disk, at(from))) return error;
    if (kindAt(_disk, at(to)) == FileKind::Directory) return make_error_code(errc::is_a_directory);
    // Two names of one file stay as they are.
    if (kindAt(_disk, at(to)) != FileKind::Nothing) {
      if (_disk.inodes.at(at(from)) == _disk.inodes.at(at(to))) return {};
      unlink(_disk, at(to));
    }
    _disk.inodes[at(to)] = _disk.inodes.at(at(from));
    _disk.inodes.erase(at(from));
    return done("rename " + at(from) + " -> " + at(to));
  }
  std::error_code renameToNew(const std::string& from, const std::string& to) override {
    if (const auto error = notAFile(_disk, at(from))) return error;
    if (const auto error = obstacleAt(to)) return error;
    _disk.inodes[at(to)] = _disk.inodes.at(at(from));
    _disk.inodes.erase(at(from));
    return done("renameToNew " + at(from) + " -> " + at(to));
  }
  std::error_code link(const std::string& name, Folder& to, const std::string& newName) override {
    auto& target = static_cast<MemoryFolder&>(to);
    if (const auto error = notAFile(_disk, at(name))) return error;
    if (const auto error = target.obstacleAt(newName)) return error;
    _disk.inodes[target.at(newName)] = _disk.inodes.at(at(name));
    return done("link " + at(name) + " -> " + target.at(newName));
  }
  std::error_code makeNote(const std::string& name, const std::string& text) override {
    if (const auto error = obstacleAt(name)) return error;
    add(_disk, at(name), FileKind::Link, text);
    return done("makeNote " + at(name));
  }
  std::string noteText(const std::string& name, std::error_code& error) const override {
    error = notAFile(_disk, at(name));
    if (error) return {};
    const Disk::Inode& inode = *inodeAt(_disk, at(name));
    if (inode.kind != FileKind::Link) error = make_error_code(errc::invalid_argument);
    return error ? std::string() : inode.bytes;
  }
  std::unique_ptr<Folder> folder(const std::string& name, std::error_code& error) override {
    const FileKind kind = kindAt(_disk, at(name));
    error = kind == FileKind::Directory
                ? std::error_code()
                : make_error_code(kind == FileKind::Nothing ? errc::no_such_file_or_directory
                                                            : errc::not_a_directory);
    return error ? nullptr : std::make_unique<MemoryFolder>(_disk, _journal, at(name));
  }
  std::error_code makeFolder(const std::string& name, const std::string& owner,
                             const std::string& group) override {
    if (const auto error = obstacleAt(name)) return error;
    if (!isKnown(owner) || !isKnown(group)) return make_error_code(errc::invalid_argument);
    const std::uint64_t number = add(_disk, at(name), FileKind::Directory, {});
    _disk.contents.at(number).owner = owner + ":" + group;
    return done("makeFolder " + at(name));
  }
  std::error_code flush() override { return done("flush " + _path); }

 private:
  std::string at(const std::string& name) const {
    return _path == "/" ? "/" + name : _path + "/" + name;
  }
  std::error_code obstacleAt(const std::string& name) const {
    const bool isFree = kindAt(_disk, at(name)) == FileKind::Nothing;
    return isFree ? std::error_code() : make_error_code(errc::file_exists);
  }
  std::error_code done(std::string entry) const {
    _journal.push_back(std::move(entry));
    return {};
  }

  Disk& _disk;
  Journal& _journal;
  const std::string _path;
};

}  // namespace

std::string MemoryFileSystem::ownerOf(const std::string& path) const {
  const auto at = disk.inodes.find(path);
  return at == disk.inodes.end() ? std::string() : disk.contents.at(at->second).owner;
}

std::string MemoryFileSystem::readFile(const std::string& path, std::error_code& error) const {
  const SplitPath at(path);
  const auto folder = openFolder(at.folder, error);
  if (!folder) return {};
  const FileContent content = folder->read(at.name);
  error = content.error;
  return content.bytes;
}

std::unique_ptr<Folder> MemoryFileSystem::openFolder(const std::string& path,
                                                     std::error_code& error) const {
  // Folders change the disk; the file system that hands them out does not.
  Disk& changeable = const_cast<Disk&>(disk);
  const FileKind kind = kindAt(changeable, path);
  if (kind == FileKind::Directory) {
    error.clear();
    return std::make_unique<MemoryFolder>(changeable, *_journal, path);
  }
  const std::string above = SplitPath(path).folder;
  const bool isBelowAFile =
      kind != FileKind::Nothing || kindAt(changeable, above) == FileKind::Regular;
  error = make_error_code(isBelowAFile ? errc::not_a_directory : errc::no_such_file_or_directory);
  return nullptr;
}

std::error_code MemoryFileSystem::createDirectories(const std::string& path, unsigned mode) {
  const FileKind kind = kindAt(disk, path);
  if (kind == FileKind::Directory) return {};
  if (kind != FileKind::Nothing) return make_error_code(errc::not_a_directory);
  if (const auto error = createDirectories(SplitPath(path).folder, mode)) return error;
  add(disk, path, FileKind::Directory, {});
  _journal->push_back("createDirectories " + path);
  return {};
}

}  // namespace tallbook
