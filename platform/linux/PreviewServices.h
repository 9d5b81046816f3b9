// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>

#include "platform/ModuleLoader.h"
#include "platform/NamedLock.h"
#include "platform/linux/PreviewFileSystem.h"

namespace tallbook {

/// Locks that keep nobody out and wait for nobody. One cannot be made where a real one could not.
class PreviewNamedLock final : public NamedLock {
 public:
  PreviewNamedLock(const DeviceRoot& root, const PreviewFileSystem& files)
      : _root(root), _files(files) {}

  std::unique_ptr<LockHold> lock(std::string_view name, const LongWait& longWait,
                                 Deadline deadline) override;

 private:
  const DeviceRoot& _root;
  const PreviewFileSystem& _files;
};

/// Loads nothing: a module's code could change anything.
class PreviewModuleLoader final : public ModuleLoader {
 public:
  const void* load(const std::string& path, std::string& error) override;
};

}  // namespace tallbook
