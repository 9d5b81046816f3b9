// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>

#include "platform/Platform.h"

namespace tallbook {

/// How the Linux platform of a process is set up.
struct LinuxPlatformOptions {
  /// Root of the device tree; "" and "/" are the running system's own.
  std::string root;
  /// Where the library log goes.
  enum class LogSink {
    JournalElseStandardError,
    StandardError,
    Nowhere
  } log = LogSink::JournalElseStandardError;
  /// Whether the console log is dropped.
  bool isSilent = false;
  /// Whether modules of a device tree that belongs to another user are loaded.
  bool trustsModules = false;
  /// Whether the device stays as it is: changes are kept in memory, and nobody else hears of them.
  bool isPreview = false;
};

std::unique_ptr<Platform> makeLinuxPlatform(const LinuxPlatformOptions& options);

}  // namespace tallbook
