// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Host.h"

#include <filesystem>
#include <system_error>

#include "tallbook/InternalConsistencyFailure.h"

#include "platform/linux/LinuxPlatform.h"

namespace tallbook {
namespace {

LinuxPlatformOptions::LogSink sinkFor(HostOptions::Log log) {
  switch (log) {
    case HostOptions::Log::StandardError:
      return LinuxPlatformOptions::LogSink::StandardError;
    case HostOptions::Log::Nowhere:
      return LinuxPlatformOptions::LogSink::Nowhere;
    case HostOptions::Log::System:
      break;
  }
  return LinuxPlatformOptions::LogSink::JournalElseStandardError;
}

}  // namespace

void configureHost(const HostOptions& options) {
  std::error_code error;
  if (!options.root.empty() && !std::filesystem::is_directory(options.root, error)) {
    throw InternalConsistencyFailure("The root of the device tree is no folder: " + options.root);
  }
  Platform::install(makeLinuxPlatform({options.root, sinkFor(options.log), options.isSilent,
                                       options.trustsModules, options.isPreview}));
}

}  // namespace tallbook
