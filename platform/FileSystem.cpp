// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/FileSystem.h"

#include <cstdio>
#include <random>

namespace tallbook {
namespace {

constexpr const char* kFreshBeginning = ".tallbook-";

}  // namespace

SplitPath::SplitPath(const std::string& path) {
  const auto slash = path.rfind('/');
  folder = slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
  name = slash == std::string::npos ? path : path.substr(slash + 1);
}

std::error_code createFile(Folder& folder, const std::string& name, std::string_view bytes) {
  std::error_code error;
  const auto file = folder.create(name, error);
  if (!file) return error;
  error = file->write(bytes);
  if (!error) error = file->finish();
  if (error) static_cast<void>(folder.remove(name));
  return error;
}

std::string freshFileName() {
  std::random_device random;
  char name[32];
  std::snprintf(name, sizeof name, "%s%08x%08x", kFreshBeginning, random(), random());
  return name;
}

bool isFreshFileName(std::string_view name) {
  constexpr std::string_view kBeginning = kFreshBeginning;
  constexpr std::size_t kDigits = 16;
  return name.size() == kBeginning.size() + kDigits && name.starts_with(kBeginning) &&
         name.find_first_not_of("0123456789abcdef", kBeginning.size()) == name.npos;
}

bool FileSystem::exists(const std::string& path, std::error_code& error) const {
  const SplitPath at(path);
  const auto folder = openFolder(at.folder, error);
  if (!folder) {
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
      error.clear();
    }
    return false;
  }
  return folder->look(at.name, error).kind != FileKind::Nothing;
}

std::error_code FileSystem::remove(const std::string& path) {
  const SplitPath at(path);
  std::error_code error;
  const auto folder = openFolder(at.folder, error);
  return folder ? folder->remove(at.name) : error;
}

std::error_code FileSystem::createFile(const std::string& path, std::string_view bytes) {
  const SplitPath at(path);
  std::error_code error;
  const auto folder = openFolder(at.folder, error);
  return folder ? tallbook::createFile(*folder, at.name, bytes) : error;
}

std::error_code FileSystem::replaceFile(const std::string& path, std::string_view bytes) {
  const SplitPath at(path);
  std::error_code error;
  const auto folder = openFolder(at.folder, error);
  if (!folder) return error;
  const std::string temporary = folder->freshName();
  error = tallbook::createFile(*folder, temporary, bytes);
  if (error) return error;
  error = folder->rename(temporary, at.name);
  if (error) static_cast<void>(folder->remove(temporary));
  return error;
}

}  // namespace tallbook
