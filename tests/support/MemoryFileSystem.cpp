#include "tests/support/MemoryFileSystem.h"

namespace tallbook {
namespace {

std::string parentOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

}  // namespace

std::string MemoryFileSystem::ownerOf(const std::string& path) const {
  const Node* node = find(path);
  return node ? node->owner : std::string();
}

std::string MemoryFileSystem::readFile(const std::string& path, std::error_code& error) const {
  error = notAFile(path);
  if (error) return {};
  done("readFile " + path);
  return find(path)->bytes;
}

bool MemoryFileSystem::isDirectory(const std::string& path) const {
  const Node* node = find(path);
  return node && node->directory;
}

std::error_code MemoryFileSystem::remove(const std::string& path) {
  if (const auto error = notAFile(path)) return error;
  _nodes.erase(path);
  return done("remove " + path);
}

std::error_code MemoryFileSystem::copyFile(const std::string& from, const std::string& to) {
  if (const auto error = notAFile(from)) return error;
  if (const auto error = add(to, find(from)->bytes)) return error;
  return done("copyFile " + from + " -> " + to);
}

std::error_code MemoryFileSystem::createDirectories(const std::string& path, unsigned mode) {
  if (const Node* node = find(path)) {
    return node->directory ? std::error_code() : make_error_code(std::errc::not_a_directory);
  }
  if (const auto error = createDirectories(parentOf(path), mode)) return error;
  _nodes[path] = {true, {}, {}};
  return done("createDirectories " + path);
}

std::optional<std::string> MemoryFileSystem::temporaryPathIn(const std::string& directory) {
  if (!isDirectory(directory)) return std::nullopt;
  std::string path;
  do {
    path = directory + "/temporary-" + std::to_string(++_temporaryNames);
  } while (exists(path));
  return path;
}

std::error_code MemoryFileSystem::createFile(const std::string& path, std::string_view bytes) {
  if (const auto error = add(path, bytes)) return error;
  return done("createFile " + path);
}

std::error_code MemoryFileSystem::setOwner(const std::string& path, const std::string& owner,
                                           const std::string& group) {
  if (!exists(path)) return make_error_code(std::errc::no_such_file_or_directory);
  if (owner == "nobody-has-this-name" || group == "nobody-has-this-name") {
    return make_error_code(std::errc::invalid_argument);
  }
  _nodes[path].owner = owner + ":" + group;
  return done("setOwner " + path + " " + owner + ":" + group);
}

std::error_code MemoryFileSystem::rename(const std::string& from, const std::string& to) {
  if (const auto error = notAFile(from)) return error;
  if (isDirectory(to)) return make_error_code(std::errc::is_a_directory);
  if (const auto error = obstacleAt(to); error && error != std::errc::file_exists) return error;
  if (from != to) {
    _nodes[to] = std::move(_nodes[from]);
    _nodes.erase(from);
  }
  return done("rename " + from + " -> " + to);
}

std::error_code MemoryFileSystem::flushDirectory(const std::string& path) {
  if (!exists(path)) return make_error_code(std::errc::no_such_file_or_directory);
  if (!isDirectory(path)) return make_error_code(std::errc::not_a_directory);
  return done("flushDirectory " + path);
}

const MemoryFileSystem::Node* MemoryFileSystem::find(const std::string& path) const {
  const auto at = _nodes.find(path);
  return at == _nodes.end() ? nullptr : &at->second;
}

std::error_code MemoryFileSystem::obstacleAt(const std::string& path) const {
  if (exists(path)) return make_error_code(std::errc::file_exists);
  const Node* parent = find(parentOf(path));
  if (!parent) return make_error_code(std::errc::no_such_file_or_directory);
  return parent->directory ? std::error_code() : make_error_code(std::errc::not_a_directory);
}

std::error_code MemoryFileSystem::add(const std::string& path, std::string_view bytes) {
  if (const auto error = obstacleAt(path)) return error;
  _nodes[path].bytes = bytes;
  return {};
}

std::error_code MemoryFileSystem::notAFile(const std::string& path) const {
  const Node* node = find(path);
  if (!node) return make_error_code(std::errc::no_such_file_or_directory);
  return node->directory ? make_error_code(std::errc::is_a_directory) : std::error_code();
}

std::error_code MemoryFileSystem::done(std::string entry) const {
  _journal.push_back(std::move(entry));
  return {};
}

}  // namespace tallbook
