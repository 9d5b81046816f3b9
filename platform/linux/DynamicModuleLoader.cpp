// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/DynamicModuleLoader.h"

#include <algorithm>
#include <dlfcn.h>
#include <fcntl.h>

namespace tallbook {

const void* DynamicModuleLoader::load(const std::string& path, std::string& error) {
  const bool loadable =
      std::all_of(path.begin(), path.end(), [](unsigned char c) { return c != 0 && c < 0x80; });
  // The linker answers the program itself for an empty path.
  if (!loadable || path.empty()) {
    error = path + ": not a path in 7-bit text";
    return nullptr;
  }
  std::string place = path;
  if (!_root.path().empty()) {
    if (!_root.contains(path)) {
      error = path + ": outside the device tree";
      return nullptr;
    }
    if (!_trustsOwner && !_root.belongsToCaller()) {
      error = path + ": the device tree belongs to another user, whose modules are not trusted";
      return nullptr;
    }
    std::error_code failure;
    const FileDescriptor file = _root.open(path, O_PATH, 0, failure);
    if (!file) {
      error = path + ": cannot open shared object file: " + failure.message();
      return nullptr;
    }
    place = DeviceRoot::placeOf(file);
  }
  const void* module = ::dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module) return module;
  const char* reason = ::dlerror();
  error = reason ? reason : path;
  return nullptr;
}

}  // namespace tallbook
