// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>

#include "platform/Platform.h"
#include "tests/support/ScriptedServices.h"

namespace tallbook {

/// The Linux platform of a device below `root`, with the services that tests script in place of
/// the real ones. Replace what a test needs before the library first uses it.
class TestPlatform final : public Platform {
 private:
  std::unique_ptr<Platform> _linux;
  FileSystem* _fileSystem;

 public:
  explicit TestPlatform(const std::string& root);

  CapturedSystemLog log;
  CapturedConsoleLog console;
  CapturingPreferences capturedPreferences;
  ScriptedDeviceInformation information;
  ScriptedRestrictions managementRestrictions;
  ScriptedPairingRecords pairing;
  ScriptedSyncSources syncSources;
  ScriptedHostedService hostedService;
  CountingBookmarksLibrary bookmarks;
  ScriptedUUIDs scriptedUUIDs;
  SettableClock localClock;
  ScriptedResources resources;

  /// Puts another file system in the place of the real one, which stays reachable.
  void replaceFileSystem(FileSystem& fileSystem) { _fileSystem = &fileSystem; }
  FileSystem& realFileSystem() { return _linux->fileSystem(); }

  FileSystem& fileSystem() override { return *_fileSystem; }
  FileWatching& fileWatching() override { return _linux->fileWatching(); }
  WellKnownDirectories& directories() override { return _linux->directories(); }
  Preferences& preferences() override { return capturedPreferences; }
  NamedLock& namedLock() override { return _linux->namedLock(); }
  SystemLog& systemLog() override { return log; }
  ConsoleLog& consoleLog() override { return console; }
  ModuleLoader& moduleLoader() override { return _linux->moduleLoader(); }
  ResourceBundle& resourceBundle() override { return resources; }
  UUIDSource& uuids() override { return scriptedUUIDs; }
  DeviceInformation& deviceInformation() override { return information; }
  ManagementRestrictions& restrictions() override { return managementRestrictions; }
  PairingRecords& pairingRecords() override { return pairing; }
  ExternalSyncSources& externalSyncSources() override { return syncSources; }
  HostedServiceLibrary& hostedServiceLibrary() override { return hostedService; }
  BookmarksLibrary& bookmarksLibrary() override { return bookmarks; }
  MessageBus& messageBus() override { return _linux->messageBus(); }
  LocalClock& clock() override { return localClock; }
};

}  // namespace tallbook
