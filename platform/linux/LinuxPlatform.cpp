// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxPlatform.h"

#include <filesystem>

#include "platform/linux/DeviceBus.h"
#include "platform/linux/DynamicModuleLoader.h"
#include "platform/linux/FactServices.h"
#include "platform/linux/LinuxBookmarksLibrary.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxDirectories.h"
#include "platform/linux/LinuxFileSystem.h"
#include "platform/linux/LinuxFileWatch.h"
#include "platform/linux/LinuxLogs.h"
#include "platform/linux/LinuxNamedLock.h"
#include "platform/linux/LinuxPreferences.h"
#include "platform/linux/LinuxResourceBundle.h"
#include "platform/linux/LinuxUUIDs.h"
#include "platform/linux/PreviewServices.h"

namespace tallbook {
namespace {

// Absolute, so that a change of the working directory moves nothing; empty for "/" itself.
std::string normalRoot(const std::string& given) {
  if (given.empty()) return {};
  std::error_code error;
  std::string root = std::filesystem::absolute(given, error).lexically_normal().string();
  while (!root.empty() && root.back() == '/') root.pop_back();
  return root;
}

// A device tree may bring its own resources. The running system's are those beside the library,
// so that a freshly built library never reads those of an installed one.
std::vector<std::string> resourceFolders(const std::string& root) {
  std::vector<std::string> folders;
  if (!root.empty()) folders.push_back(root + "/usr/share/tallbook");
  folders.push_back(LinuxResourceBundle::folderOfThisLibrary());
  return folders;
}

class LinuxPlatform : public Platform {
 public:
  LinuxPlatform(const std::string& root, const LinuxPlatformOptions& options)
      : _root(root, options.isPreview),
        _fileSystem(_root),
        _fileWatching(_root),
        _directories(_root),
        _bus(_root, options.isPreview),
        _preferences(_root, _directories, _bus),
        _namedLock(_root),
        _systemLog(makeSystemLog(options.log)),
        _consoleLog(options.isSilent),
        _moduleLoader(_root, options.trustsModules),
        _resourceBundle(_root, resourceFolders(root)),
        _deviceInformation(_root),
        _restrictions(_root),
        _pairingRecords(_root),
        _syncSources(_root),
        _hostedService(_root),
        _bookmarksLibrary(_bus) {}

  FileSystem& fileSystem() override { return _fileSystem; }
  FileWatching& fileWatching() override { return _fileWatching; }
  WellKnownDirectories& directories() override { return _directories; }
  Preferences& preferences() override { return _preferences; }
  NamedLock& namedLock() override { return _namedLock; }
  SystemLog& systemLog() override { return *_systemLog; }
  ConsoleLog& consoleLog() override { return _consoleLog; }
  ModuleLoader& moduleLoader() override { return _moduleLoader; }
  ResourceBundle& resourceBundle() override { return _resourceBundle; }
  UUIDSource& uuids() override { return _uuids; }
  DeviceInformation& deviceInformation() override { return _deviceInformation; }
  ManagementRestrictions& restrictions() override { return _restrictions; }
  PairingRecords& pairingRecords() override { return _pairingRecords; }
  ExternalSyncSources& externalSyncSources() override { return _syncSources; }
  HostedServiceLibrary& hostedServiceLibrary() override { return _hostedService; }
  BookmarksLibrary& bookmarksLibrary() override { return _bookmarksLibrary; }
  MessageBus& messageBus() override { return _bus; }
  LocalClock& clock() override { return _clock; }

 protected:
  DeviceRoot _root;
  LinuxFileSystem _fileSystem;

 private:
  LinuxFileWatching _fileWatching;
  LinuxDirectories _directories;
  DeviceBus _bus;
  LinuxPreferences _preferences;
  LinuxNamedLock _namedLock;
  std::unique_ptr<SystemLog> _systemLog;
  StandardErrorConsoleLog _consoleLog;
  DynamicModuleLoader _moduleLoader;
  LinuxResourceBundle _resourceBundle;
  LinuxUUIDs _uuids;
  LinuxDeviceInformation _deviceInformation;
  LinuxRestrictions _restrictions;
  LinuxPairingRecords _pairingRecords;
  LinuxSyncSources _syncSources;
  LinuxHostedService _hostedService;
  LinuxBookmarksLibrary _bookmarksLibrary;
  LinuxClock _clock;
};

/// The same device, of which nothing is changed.
class PreviewPlatform final : public LinuxPlatform {
 public:
  PreviewPlatform(const std::string& root, const LinuxPlatformOptions& options)
      : LinuxPlatform(root, options), _files(_fileSystem), _lock(_root, _files) {}

  FileSystem& fileSystem() override { return _files; }
  NamedLock& namedLock() override { return _lock; }
  ModuleLoader& moduleLoader() override { return _modules; }

 private:
  PreviewFileSystem _files;
  PreviewNamedLock _lock;
  PreviewModuleLoader _modules;
};

}  // namespace

std::unique_ptr<Platform> makeLinuxPlatform(const LinuxPlatformOptions& options) {
  const std::string root = normalRoot(options.root);
  if (options.isPreview) return std::make_unique<PreviewPlatform>(root, options);
  return std::make_unique<LinuxPlatform>(root, options);
}

}  // namespace tallbook
