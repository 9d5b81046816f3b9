#include "tallbook/Host.h"

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
  Platform::install(makeLinuxPlatform({options.root, sinkFor(options.log), options.trustsModules}));
}

}  // namespace tallbook
