// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tests/support/MemoryFileSystem.h"
#include "tests/support/TestPlatform.h"

namespace tallbook::fuzz {

/// A device whose files are in memory and whose services are scripted; its platform is the
/// process's as long as it lives. It knows the shipped account types, and nobody who is to be told
/// of their accounts.
class MemoryDevice {
 public:
  MemoryDevice();
  ~MemoryDevice();
  MemoryDevice(const MemoryDevice&) = delete;
  MemoryDevice& operator=(const MemoryDevice&) = delete;

  TestPlatform& platform() { return *_platform; }
  /// Nothing is heard of the library's log any more, nor kept of it.
  void silence() { _platform->log.listening = false; }

  std::string home() const;
  std::string accountsPath() const;
  /// Puts a file in the place of what lies there.
  void put(const std::string& path, std::string_view bytes);
  /// The bytes of a file; nullopt where there is none.
  std::optional<std::string> at(const std::string& path) const;

 private:
  MemoryFileSystem _files;
  TestPlatform* _platform;
};

}  // namespace tallbook::fuzz
