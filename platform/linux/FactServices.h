// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "platform/DeviceServices.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

// Services of the device, as a Linux device has them: facts stand in property lists in the folder
// etc/tallbook below the root, read afresh at every question; docs/platform.md describes each file.

/// DeviceInformation.plist; the processor from the kernel where the file does not say.
class LinuxDeviceInformation final : public DeviceInformation {
 public:
  explicit LinuxDeviceInformation(const DeviceRoot& root);
  Value answerForKey(std::string_view key) const override;

 private:
  const DeviceRoot& _root;
  std::string _path;
};

/// Restrictions.plist.
class LinuxRestrictions final : public ManagementRestrictions {
 public:
  explicit LinuxRestrictions(const DeviceRoot& root);
  std::vector<int> restrictionsOfFeatures(const std::vector<Feature>& features) const override;

 private:
  const DeviceRoot& _root;
  std::string _path;
};

/// PairingRecords.plist.
class LinuxPairingRecords final : public PairingRecords {
 public:
  explicit LinuxPairingRecords(const DeviceRoot& root);
  Value valueForKey(std::string_view key, std::string_view domain) const override;

 private:
  const DeviceRoot& _root;
  std::string _path;
};

/// SyncSources.plist. A malformed file or entry is the daemon's error.
class LinuxSyncSources final : public ExternalSyncSources {
 public:
  explicit LinuxSyncSources(const DeviceRoot& root);
  Answer enabledSourcesForDataType(DataType type) const override;

 private:
  const DeviceRoot& _root;
  std::string _path;
};

/// HostedService.plist.
class LinuxHostedService final : public HostedServiceLibrary {
 public:
  explicit LinuxHostedService(const DeviceRoot& root);
  std::string accountTypeDisplayString() const override;

 private:
  const DeviceRoot& _root;
  std::string _path;
};

}  // namespace tallbook
