// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/Files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tallbook/PropertyList.h"

namespace tallbook::test {
namespace fs = std::filesystem;

void writeFile(const std::string& path, std::string_view bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool exists(const std::string& path) {
  return fs::exists(fs::symlink_status(path));
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code absent;
  for (const auto& entry : fs::directory_iterator(folder, absent)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

void writePropertyList(const std::string& path, const Value& root) {
  std::string problem;
  const auto bytes = binaryPropertyList(root, &problem);
  if (!bytes) throw std::runtime_error("cannot encode " + path + ": " + problem);
  writeFile(path, *bytes);
}

Value readPropertyList(const std::string& path) {
  return exists(path) ? propertyListFromBytes(readFile(path)).value_or(Value()) : Value();
}

}  // namespace tallbook::test
