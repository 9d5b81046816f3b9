// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/FileBytes.h"

#include <cerrno>
#include <cstdio>
#include <memory>

namespace tallbook::tool {
namespace {

// The library reads no longer file.
constexpr std::size_t kLongestRead = std::size_t{1} << 30;

std::error_code lastError() {
  return {errno, std::generic_category()};
}

std::string bytesToEnd(std::FILE* file, std::error_code& error) {
  std::string bytes;
  char piece[1 << 16];
  while (const std::size_t got = std::fread(piece, 1, sizeof piece, file)) {
    bytes.append(piece, got);
    if (bytes.size() > kLongestRead) {
      error = make_error_code(std::errc::file_too_large);
      return {};
    }
  }
  if (std::ferror(file) != 0) error = lastError();
  return error ? std::string() : bytes;
}

}  // namespace

std::string bytesOfFile(const std::string& path, std::error_code& error) {
  error.clear();
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                             &std::fclose);
  if (file) return bytesToEnd(file.get(), error);
  error = lastError();
  return {};
}

std::string bytesOfStandardInput(std::error_code& error) {
  error.clear();
  return bytesToEnd(stdin, error);
}

std::string adviceOnRefusal(const std::error_code& error) {
  const bool isRefused =
      error == std::errc::permission_denied || error == std::errc::operation_not_permitted;
  return isRefused ? "; run as mobile" : "";
}

std::string adviceOnUnreadable(const std::error_code& error) {
  if (const std::string advice = adviceOnRefusal(error); !advice.empty()) return advice.substr(2);
  if (error == std::errc::is_a_directory || error == std::errc::not_supported) {
    return "move away what lies there, it is no regular file";
  }
  if (error == std::errc::file_too_large) return "restore it from a copy";
  return "repeat the command, and restore the file from a copy where that does not help";
}

}  // namespace tallbook::tool
