// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/FailingFileSystem.h"

#include <exception>
#include <utility>

namespace tallbook {
namespace {

// The answer to code that still runs while the simulated end of the process unwinds its stack.
const auto kDead = make_error_code(std::errc::io_error);

class FailingNewFile final : public NewFile {
 public:
  FailingNewFile(const FailingFileSystem& files, std::unique_ptr<NewFile> inner)
      : _files(files), _inner(std::move(inner)) {}

  std::error_code write(std::string_view bytes) override {
    const auto half = [&] { (void)_inner->write(bytes.substr(0, bytes.size() / 2)); };
    if (const auto error = _files.next("write", half)) return error;
    return _inner->write(bytes);
  }
  std::error_code giveTo(const std::string& owner, const std::string& group) override {
    if (const auto error = _files.next("giveTo")) return error;
    return _inner->giveTo(owner, group);
  }
  std::error_code finish(const FileVersion& replaced) override {
    if (const auto error = _files.next("finish")) return error;
    return _inner->finish(replaced);
  }

 private:
  const FailingFileSystem& _files;
  const std::unique_ptr<NewFile> _inner;
};

class FailingFolder final : public Folder {
 public:
  FailingFolder(const FailingFileSystem& files, std::unique_ptr<Folder> inner)
      : _files(files), _inner(std::move(inner)) {}

  FileContent read(const std::string& name) const override {
    if (const auto error = _files.next("read")) return {error, {}, {}, {}};
    return _inner->read(name);
  }
  FileLook look(const std::string& name, std::error_code& error) const override {
    if ((error = _files.next("look"))) return {};
    return _inner->look(name, error);
  }
  std::vector<std::string> names(std::error_code& error) const override {
    if ((error = _files.next("names"))) return {};
    return _inner->names(error);
  }
  std::string freshName() const override { return _inner->freshName(); }
  std::unique_ptr<NewFile> create(const std::string& name, std::error_code& error) override {
    if ((error = _files.next("create"))) return nullptr;
    auto file = _inner->create(name, error);
    return file ? std::make_unique<FailingNewFile>(_files, std::move(file)) : nullptr;
  }
  std::error_code remove(const std::string& name) override {
    if (const auto error = _files.next("remove")) return error;
    return _inner->remove(name);
  }
  std::error_code rename(const std::string& from, const std::string& to) override {
    if (const auto error = _files.next("rename")) return error;
    return _inner->rename(from, to);
  }
  std::error_code renameToNew(const std::string& from, const std::string& to) override {
    if (const auto error = _files.next("renameToNew")) return error;
    return _inner->renameToNew(from, to);
  }
  std::error_code link(const std::string& name, Folder& to, const std::string& newName) override {
    if (const auto error = _files.next("link")) return error;
    return _inner->link(name, *static_cast<FailingFolder&>(to)._inner, newName);
  }
  std::error_code makeNote(const std::string& name, const std::string& text) override {
    if (const auto error = _files.next("makeNote")) return error;
    return _inner->makeNote(name, text);
  }
  std::string noteText(const std::string& name, std::error_code& error) const override {
    if ((error = _files.next("noteText"))) return {};
    return _inner->noteText(name, error);
  }
  std::unique_ptr<Folder> folder(const std::string& name, std::error_code& error) override {
    if ((error = _files.next("folder"))) return nullptr;
    auto found = _inner->folder(name, error);
    return found ? std::make_unique<FailingFolder>(_files, std::move(found)) : nullptr;
  }
  std::error_code makeFolder(const std::string& name, const std::string& owner,
                             const std::string& group) override {
    if (const auto error = _files.next("makeFolder")) return error;
    return _inner->makeFolder(name, owner, group);
  }
  std::error_code flush() override {
    if (const auto error = _files.next("flush")) return error;
    return _inner->flush();
  }

 private:
  const FailingFileSystem& _files;
  const std::unique_ptr<Folder> _inner;
};

}  // namespace

void FailingFileSystem::failAt(std::size_t n, std::error_code error) {
  heal();
  _failAt = n;
  _error = error;
}

void FailingFileSystem::failEvery(const std::string& name, std::error_code error) {
  heal();
  _failEvery = name;
  _error = error;
}

void FailingFileSystem::stopAt(std::size_t n) {
  heal();
  _stopAt = n;
}

void FailingFileSystem::callAt(std::size_t n, std::function<void()> what) {
  heal();
  _callAt = n;
  _call = std::move(what);
}

void FailingFileSystem::heal() {
  _names.clear();
  _failEvery.clear();
  _failAt = _stopAt = _callAt = kNever;
  _stopped = false;
}

std::string FailingFileSystem::readFile(const std::string& path, std::error_code& error) const {
  if ((error = next("readFile"))) return {};
  return _inner.readFile(path, error);
}

std::unique_ptr<Folder> FailingFileSystem::openFolder(const std::string& path,
                                                      std::error_code& error) const {
  if ((error = next("openFolder"))) return nullptr;
  auto folder = _inner.openFolder(path, error);
  return folder ? std::make_unique<FailingFolder>(*this, std::move(folder)) : nullptr;
}

std::error_code FailingFileSystem::createDirectories(const std::string& path, unsigned mode) {
  if (const auto error = next("createDirectories")) return error;
  return _inner.createDirectories(path, mode);
}

std::error_code FailingFileSystem::next(const char* name,
                                        const std::function<void()>& beforeStop) const {
  if (_stopped && std::uncaught_exceptions() == 0) throw Stopped();
  if (_stopped) return kDead;
  _names.emplace_back(name);
  const std::size_t n = _names.size();
  if (n == _callAt) _call();
  if (n == _stopAt) {
    beforeStop();
    _stopped = true;
    throw Stopped();
  }
  return n == _failAt || name == _failEvery ? _error : std::error_code();
}

}  // namespace tallbook
