// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/ModuleLoader.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// The dynamic linker. A module's symbols are its own: two modules may use one name.
///
/// Below another root, modules come from that tree alone, and only where it belongs to the user who
/// runs the process, unless its owner is trusted: a module is that owner's code.
class DynamicModuleLoader final : public ModuleLoader {
 public:
  DynamicModuleLoader(const DeviceRoot& root, bool trustsOwner)
      : _root(root), _trustsOwner(trustsOwner) {}

  const void* load(const std::string& path, std::string& error) override;

 private:
  const DeviceRoot& _root;
  const bool _trustsOwner;
};

}  // namespace tallbook
