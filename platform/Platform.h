// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdint>
#include <memory>

#include "platform/DeviceServices.h"
#include "platform/FileSystem.h"
#include "platform/FileWatch.h"
#include "platform/Logs.h"
#include "platform/MessageBus.h"
#include "platform/ModuleLoader.h"
#include "platform/NamedLock.h"
#include "platform/Preferences.h"
#include "platform/ResourceBundle.h"
#include "platform/WellKnownDirectories.h"

namespace tallbook {

/// The operating system as the library sees it. Every service always has an object; its interface
/// says what it answers where the service itself is absent.
class Platform {
 public:
  virtual ~Platform() = default;

  virtual FileSystem& fileSystem() = 0;
  virtual FileWatching& fileWatching() = 0;
  virtual WellKnownDirectories& directories() = 0;
  virtual Preferences& preferences() = 0;
  virtual NamedLock& namedLock() = 0;
  virtual SystemLog& systemLog() = 0;
  virtual ConsoleLog& consoleLog() = 0;
  virtual ModuleLoader& moduleLoader() = 0;
  virtual ResourceBundle& resourceBundle() = 0;
  virtual UUIDSource& uuids() = 0;
  virtual DeviceInformation& deviceInformation() = 0;
  virtual ManagementRestrictions& restrictions() = 0;
  virtual PairingRecords& pairingRecords() = 0;
  virtual ExternalSyncSources& externalSyncSources() = 0;
  virtual HostedServiceLibrary& hostedServiceLibrary() = 0;
  virtual BookmarksLibrary& bookmarksLibrary() = 0;
  virtual MessageBus& messageBus() = 0;
  virtual LocalClock& clock() = 0;

  /// The process's platform: the installed one, else the Linux device whose root is "/".
  static Platform& current();
  /// Replaces the process's platform. Meant for before the library's first use: records, stores
  /// and references to services of the platform before must not be used any more. What the
  /// library keeps for the life of the process is made afresh (`OncePerPlatform`).
  static void install(std::unique_ptr<Platform> platform);
  /// Grows with every `install`.
  static std::uint64_t generation() noexcept;
};

}  // namespace tallbook
