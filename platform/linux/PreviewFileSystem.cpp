// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/PreviewFileSystem.h"

#include <optional>
#include <utility>

#include "platform/linux/LinuxFolder.h"

namespace tallbook {
namespace {

using Made = PreviewFileSystem::Made;
using Entry = PreviewFileSystem::Entry;
using Changes = PreviewFileSystem::Changes;
using std::errc;

// All folders of a Linux file system are of that class.
std::shared_ptr<LinuxFolder> linuxFolder(std::unique_ptr<Folder> folder) {
  return std::shared_ptr<LinuxFolder>(static_cast<LinuxFolder*>(folder.release()));
}

FileLook lookAt(const Entry& entry, std::error_code& error) {
  error.clear();
  if (entry.folder) return entry.folder->look(entry.name, error);
  if (!entry.made) return {};
  FileLook look{entry.made->kind, entry.made->version};
  look.version.size = entry.made->content.size();
  return look;
}

/// Why what has the name cannot be used as a file or a link; nothing where it can.
std::error_code notAFile(FileKind kind) {
  if (kind == FileKind::Nothing) return make_error_code(errc::no_such_file_or_directory);
  return kind == FileKind::Directory ? make_error_code(errc::is_a_directory) : std::error_code();
}

class PreviewNewFile final : public NewFile {
 public:
  PreviewNewFile(std::shared_ptr<Made> file, const AccountDatabase& accounts)
      : _file(std::move(file)), _accounts(accounts) {}

  std::error_code write(std::string_view bytes) override {
    _file->content += bytes;
    return {};
  }
  std::error_code giveTo(const std::string& owner, const std::string& group) override {
    return obstacleToGiving(_accounts, owner, group);
  }
  // Its inode tells it from every other file.
  std::error_code finish(const FileVersion&) override { return {}; }

 private:
  std::shared_ptr<Made> _file;
  const AccountDatabase& _accounts;
};

class PreviewFolder final : public Folder {
 public:
  /// `device` is the device's folder at that path; null for one that was made.
  PreviewFolder(Changes& changes, std::string path, std::shared_ptr<LinuxFolder> device)
      : _changes(changes), _path(std::move(path)), _device(std::move(device)) {}

  FileContent read(const std::string& name) const override {
    const Entry entry = at(name);
    if (entry.folder) return entry.folder->read(entry.name);
    FileContent content;
    const FileLook look = lookAt(entry, content.error);
    content.version = look.version;
    content.error = notAFile(look.kind);
    if (look.kind == FileKind::Link) content.error = notAFile(FileKind::Nothing);
    if (!content.error) content.bytes = entry.made->content;
    return content;
  }
  FileLook look(const std::string& name, std::error_code& error) const override {
    return lookAt(at(name), error);
  }
  std::vector<std::string> names(std::error_code& error) const override {
    error.clear();
    std::vector<std::string> names;
    if (_device) names = _device->names(error);
    std::erase_if(names, [this](const auto& name) { return _changes.entries.contains(in(name)); });
    const std::string prefix = in("");
    for (auto change = _changes.entries.lower_bound(prefix);
         change != _changes.entries.end() && change->first.starts_with(prefix); ++change) {
      std::string name = change->first.substr(prefix.size());
      const bool isFree = !change->second.made && !change->second.folder;
      if (!isFree && name.find('/') == std::string::npos) names.push_back(std::move(name));
    }
    return names;
  }
  std::string freshName() const override { return freshFileName(); }

  std::unique_ptr<NewFile> create(const std::string& name, std::error_code& error) override {
    const std::shared_ptr<Made> made = make(name, FileKind::Regular, {}, error);
    return made ? std::make_unique<PreviewNewFile>(made, _changes.accounts) : nullptr;
  }
  std::error_code remove(const std::string& name) override {
    std::error_code error;
    if (!file(name, error)) return error;
    change(name, {});
    return {};
  }
  std::error_code rename(const std::string& from, const std::string& to) override {
    std::error_code error;
    const auto moved = file(from, error);
    if (!moved) return error;
    const FileLook replaced = look(to, error);
    if (!error && replaced.kind == FileKind::Directory) error = notAFile(replaced.kind);
    if (!error) error = obstacleToTaking(to);
    // Two names of one file stay as they are.
    if (error || replaced.version.inode == lookAt(*moved, error).version.inode) return error;
    change(to, *moved);
    change(from, {});
    return {};
  }
  std::error_code renameToNew(const std::string& from, const std::string& to) override {
    std::error_code error;
    const FileLook moved = look(from, error);
    if (!error && moved.kind == FileKind::Nothing) error = notAFile(moved.kind);
    if (!error) error = obstacleToTaking(from);
    if (!error) error = obstacleToNew(to);
    if (error) return error;
    change(to, at(from));
    change(from, {});
    return {};
  }
  std::error_code link(const std::string& name, Folder& to, const std::string& newName) override {
    auto& target = static_cast<PreviewFolder&>(to);
    std::error_code error;
    const FileLook linked = look(name, error);
    if (!error) error = notAFile(linked.kind);
    if (!error) error = target.obstacleToNew(newName);
    if (!error) target.change(newName, at(name));
    return error;
  }

  std::error_code makeNote(const std::string& name, const std::string& text) override {
    std::error_code error;
    make(name, FileKind::Link, text, error);
    return error;
  }
  std::string noteText(const std::string& name, std::error_code& error) const override {
    const Entry entry = at(name);
    if (entry.folder) return entry.folder->noteText(entry.name, error);
    const FileKind kind = lookAt(entry, error).kind;
    if (kind == FileKind::Link) return entry.made->content;
    error = make_error_code(kind == FileKind::Nothing ? errc::no_such_file_or_directory
                                                      : errc::invalid_argument);
    return {};
  }

  std::unique_ptr<Folder> folder(const std::string& name, std::error_code& error) override {
    const Entry entry = at(name);
    std::shared_ptr<LinuxFolder> device;
    if (entry.folder) {
      device = linuxFolder(entry.folder->folder(entry.name, error));
      if (!device) return nullptr;
    } else if (const FileKind kind = lookAt(entry, error).kind; kind != FileKind::Directory) {
      error = make_error_code(kind == FileKind::Nothing ? errc::no_such_file_or_directory
                                                        : errc::not_a_directory);
      return nullptr;
    }
    return std::make_unique<PreviewFolder>(_changes, in(name), std::move(device));
  }
  std::error_code makeFolder(const std::string& name, const std::string& owner,
                             const std::string& group) override {
    std::error_code error = obstacleToNew(name);
    if (!error) error = obstacleToGiving(_changes.accounts, owner, group);
    if (!error) make(name, FileKind::Directory, {}, error);
    return error;
  }
  std::error_code flush() override { return {}; }

  /// A new file, link or folder; null, with `error`, where it cannot be made.
  std::shared_ptr<Made> make(const std::string& name, FileKind kind, std::string content,
                             std::error_code& error) {
    error = obstacleToNew(name);
    if (error) return nullptr;
    std::shared_ptr<Made> made = std::make_shared<Made>(Made{kind, std::move(content), {}});
    made->version.inode = ++_changes.lastInode;
    change(name, {made, nullptr, {}});
    return made;
  }

 private:
  std::string in(const std::string& name) const {
    return _path.ends_with('/') ? _path + name : _path + "/" + name;
  }
  Entry at(const std::string& name) const {
    const auto changed = _changes.entries.find(in(name));
    return changed != _changes.entries.end() ? changed->second : Entry{nullptr, _device, name};
  }
  void change(const std::string& name, Entry entry) {
    _changes.entries[in(name)] = std::move(entry);
  }
  std::error_code obstacleToTaking(const std::string& name) const {
    return _device ? _device->obstacleToTaking(name) : std::error_code();
  }
  std::error_code obstacleToNew(const std::string& name) const {
    std::error_code error;
    const FileKind kind = look(name, error).kind;
    if (error) return error;
    if (kind != FileKind::Nothing) return make_error_code(errc::file_exists);
    return _device ? _device->obstacleToMaking() : error;
  }
  /// The file or link of that name, if the caller may take it away.
  std::optional<Entry> file(const std::string& name, std::error_code& error) const {
    const Entry entry = at(name);
    const FileKind kind = lookAt(entry, error).kind;
    if (!error) error = notAFile(kind);
    if (!error) error = obstacleToTaking(name);
    return error ? std::nullopt : std::optional(entry);
  }

  Changes& _changes;
  const std::string _path;
  const std::shared_ptr<LinuxFolder> _device;
};

}  // namespace

PreviewFileSystem::PreviewFileSystem(const LinuxFileSystem& files)
    : _files(files), _changes(std::make_unique<Changes>(Changes{files.accounts(), {}})) {}

std::string PreviewFileSystem::readFile(const std::string& path, std::error_code& error) const {
  if (!_changes->entries.contains(path)) return _files.readFile(path, error);
  const SplitPath at(path);
  const auto folder = openFolder(at.folder, error);
  if (!folder) return {};
  FileContent content = folder->read(at.name);
  error = content.error;
  return std::move(content.bytes);
}

std::unique_ptr<Folder> PreviewFileSystem::openFolder(const std::string& path,
                                                      std::error_code& error) const {
  if (_changes->entries.contains(path)) {
    const SplitPath at(path);
    const auto above = openFolder(at.folder, error);
    return above ? above->folder(at.name, error) : nullptr;
  }
  auto device = linuxFolder(_files.openFolder(path, error));
  return device ? std::make_unique<PreviewFolder>(*_changes, path, std::move(device)) : nullptr;
}

std::error_code PreviewFileSystem::createDirectories(const std::string& path, unsigned mode) {
  std::error_code error;
  if (openFolder(path, error) || error != errc::no_such_file_or_directory) return error;
  const SplitPath at(path);
  if ((error = createDirectories(at.folder, mode))) return error;
  const auto above = openFolder(at.folder, error);
  if (above) static_cast<PreviewFolder&>(*above).make(at.name, FileKind::Directory, {}, error);
  return error;
}

}  // namespace tallbook
