#include "platform/linux/LinuxPlatform.h"

#include <filesystem>

#include "platform/linux/DeviceBus.h"
#include "platform/linux/DynamicModuleLoader.h"
#include "platform/linux/FactServices.h"
#include "platform/linux/LinuxBookmarksLibrary.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxDirectories.h"
#include "platform/linux/LinuxFileSystem.h"
#include "platform/linux/LinuxLogs.h"
#include "platform/linux/LinuxNamedLock.h"
#include "platform/linux/LinuxPreferences.h"
#include "platform/linux/LinuxResourceBundle.h"
#include "platform/linux/LinuxUUIDs.h"

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

class LinuxPlatform final : public Platform {
 public:
  LinuxPlatform(const std::string& root, const LinuxPlatformOptions& options)
      : _root(root),
        _fileSystem(_root),
        _directories(_root),
        _bus(_root),
        _preferences(_root, _directories, _bus),
        _namedLock(_root),
        _systemLog(makeSystemLog(options.log)),
        _moduleLoader(_root, options.trustsModules),
        _resourceBundle(_root, resourceFolders(root)),
        _deviceInformation(_root),
        _restrictions(_root),
        _pairingRecords(_root),
        _syncSources(_root),
        _hostedService(_root),
        _bookmarksLibrary(_bus) {}

  FileSystem& fileSystem() override { return _fileSystem; }
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
  LocalClock& clock() override { return _clock; }

 private:
  DeviceRoot _root;
  LinuxFileSystem _fileSystem;
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

}  // namespace

std::unique_ptr<Platform> makeLinuxPlatform(const LinuxPlatformOptions& options) {
  return std::make_unique<LinuxPlatform>(normalRoot(options.root), options);
}

}  // namespace tallbook
