// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "tallbook/DataMigrator.h"

namespace tallbook::migrate {

/// The module or its class cannot be had; `what()` says why and what to do.
class ModuleFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Loads a migration plug-in, for as long as the process lives, and makes its principal class.
/// `path` may be the bare name of a library. Throws ModuleFailure.
std::unique_ptr<DataMigrator> migratorOfModule(const std::string& path,
                                               const std::string& className);

}  // namespace tallbook::migrate
