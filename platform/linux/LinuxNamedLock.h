#pragma once

#include <string>

#include "platform/NamedLock.h"

namespace tallbook {

/// Advisory locks on files named after the locks in the folder tmp below the root. Users of every
/// account can wait for and take them; the files stay behind, empty.
///
/// A lock cannot be made where something other than a regular file, a symbolic link included, was
/// planted at its path.
class LinuxNamedLock final : public NamedLock {
 public:
  explicit LinuxNamedLock(const std::string& root) : _folder(root + "/tmp/") {}

  std::unique_ptr<LockHold> lock(std::string_view name) override;

 private:
  std::string _folder;
};

}  // namespace tallbook
