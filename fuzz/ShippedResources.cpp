// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/ShippedResources.h"

#include <filesystem>

namespace tallbook {

// Beside the program: whoever runs the targets takes their folder elsewhere.
std::string shippedResources() {
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
  return program.parent_path() / TALLBOOK_RESOURCE_DIRECTORY;
}

}  // namespace tallbook
