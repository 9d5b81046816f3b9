#include "tests/support/FailingFileSystem.h"

#include <exception>
#include <utility>

namespace tallbook {
namespace {

// The answer to code that still runs while the simulated end of the process unwinds its stack.
const auto kDead = make_error_code(std::errc::io_error);

}  // namespace

void FailingFileSystem::failAt(std::size_t n, std::error_code error) {
  heal();
  _failAt = n;
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
  _operations = 0;
  _failAt = _stopAt = _callAt = kNever;
  _stopped = false;
}

std::string FailingFileSystem::readFile(const std::string& path, std::error_code& error) const {
  checkAlive();
  if (_stopped) {
    error = kDead;
    return {};
  }
  return _inner.readFile(path, error);
}

bool FailingFileSystem::exists(const std::string& path) const {
  checkAlive();
  return _inner.exists(path);
}

bool FailingFileSystem::isDirectory(const std::string& path) const {
  checkAlive();
  return _inner.isDirectory(path);
}

std::error_code FailingFileSystem::remove(const std::string& path) {
  if (const auto error = next()) return error;
  return _inner.remove(path);
}

std::error_code FailingFileSystem::copyFile(const std::string& from, const std::string& to) {
  if (stopsNow()) {
    std::error_code error;
    const std::string bytes = _inner.readFile(from, error);
    if (!error) (void)_inner.createFile(to, std::string_view(bytes).substr(0, bytes.size() / 2));
  }
  if (const auto error = next()) return error;
  return _inner.copyFile(from, to);
}

std::error_code FailingFileSystem::createDirectories(const std::string& path, unsigned mode) {
  if (const auto error = next()) return error;
  return _inner.createDirectories(path, mode);
}

std::optional<std::string> FailingFileSystem::temporaryPathIn(const std::string& directory) {
  if (next()) return std::nullopt;
  return _inner.temporaryPathIn(directory);
}

std::error_code FailingFileSystem::createFile(const std::string& path, std::string_view bytes) {
  if (stopsNow()) (void)_inner.createFile(path, bytes.substr(0, bytes.size() / 2));
  if (const auto error = next()) return error;
  return _inner.createFile(path, bytes);
}

std::error_code FailingFileSystem::setOwner(const std::string& path, const std::string& owner,
                                            const std::string& group) {
  if (const auto error = next()) return error;
  return _inner.setOwner(path, owner, group);
}

std::error_code FailingFileSystem::rename(const std::string& from, const std::string& to) {
  if (const auto error = next()) return error;
  return _inner.rename(from, to);
}

std::error_code FailingFileSystem::flushDirectory(const std::string& path) {
  if (const auto error = next()) return error;
  return _inner.flushDirectory(path);
}

std::error_code FailingFileSystem::next() {
  checkAlive();
  if (_stopped) return kDead;
  const std::size_t n = ++_operations;
  if (n == _callAt) _call();
  if (n == _stopAt) {
    _stopped = true;
    throw Stopped();
  }
  return n == _failAt ? _error : std::error_code();
}

void FailingFileSystem::checkAlive() const {
  if (_stopped && std::uncaught_exceptions() == 0) throw Stopped();
}

}  // namespace tallbook
