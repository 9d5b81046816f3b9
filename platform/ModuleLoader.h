// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

namespace tallbook {

/// Loads code modules into the process, for good.
class ModuleLoader {
 public:
  virtual ~ModuleLoader() = default;

  /// Loads the module with all its symbols bound at once, or finds it loaded already. The answer
  /// identifies the module: equal for every path to it. Null, with the loader's text in `error`,
  /// when it cannot be loaded; a path outside 7-bit text cannot.
  virtual const void* load(const std::string& path, std::string& error) = 0;
};

}  // namespace tallbook
