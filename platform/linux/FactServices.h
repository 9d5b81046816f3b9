#pragma once

#include <string>

#include "platform/DeviceServices.h"

namespace tallbook {

// Services of the device, as a Linux device has them: facts stand in property lists in the folder
// etc/tallbook below the root, read afresh at every question; docs/platform.md describes each file.

/// DeviceInformation.plist; the processor from the kernel where the file does not say.
class LinuxDeviceInformation final : public DeviceInformation {
 public:
  explicit LinuxDeviceInformation(const std::string& facts);
  Value answerForKey(std::string_view key) const override;

 private:
  std::string _path;
};

/// Restrictions.plist.
class LinuxRestrictions final : public ManagementRestrictions {
 public:
  explicit LinuxRestrictions(const std::string& facts);
  int restrictionOfFeature(Feature feature) const override;

 private:
  std::string _path;
};

/// PairingRecords.plist.
class LinuxPairingRecords final : public PairingRecords {
 public:
  explicit LinuxPairingRecords(const std::string& facts);
  Value valueForKey(std::string_view key, std::string_view domain) const override;

 private:
  std::string _path;
};

/// SyncSources.plist. A malformed file or entry is the daemon's error.
class LinuxSyncSources final : public ExternalSyncSources {
 public:
  explicit LinuxSyncSources(const std::string& facts);
  Answer enabledSourcesForDataType(DataType type) const override;

 private:
  std::string _path;
};

/// HostedService.plist.
class LinuxHostedService final : public HostedServiceLibrary {
 public:
  explicit LinuxHostedService(const std::string& facts);
  std::string accountTypeDisplayString() const override;

 private:
  std::string _path;
};

}  // namespace tallbook
