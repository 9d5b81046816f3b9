#pragma once

#include <mutex>

#include "platform/WellKnownDirectories.h"

namespace tallbook {

/// The device's folders below its root; the running system's own for an empty root.
class LinuxDirectories final : public WellKnownDirectories {
 public:
  explicit LinuxDirectories(std::string root) : _root(std::move(root)) {}

  std::string systemRoot() const override { return _root; }
  std::string mobileHome() const override;
  std::string sharedResources() const override { return _root + "/var/mobile"; }
  std::string mailData() const override { return mobileHome() + "/Library/Mail"; }
  /// The accounts file's own folder, so that the rename never crosses file systems.
  std::string temporary() const override { return _root + "/var/mobile/Library/Preferences"; }

 private:
  std::string _root;
  mutable std::once_flag _homeAsked;
  mutable std::string _home;
};

}  // namespace tallbook
