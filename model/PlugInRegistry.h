// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>

#include "tallbook/PlugInClass.h"

namespace tallbook {

/// Loads the code module at `framework`, a path below the system root, and registers its classes;
/// nothing more happens for a module that is loaded already. A path whose last component is this
/// library's own file name means the running library, and nothing is loaded. Throws
/// InternalConsistencyFailure when the module cannot be loaded, or was built for another version of
/// the plug-in interface. Modules stay loaded. Thread-safe.
void loadAccountCreatorFramework(std::string_view framework);

/// Why no module can be loaded from `framework`, as far as that shows without loading it; else
/// empty.
std::string whyNoModule(std::string_view framework);

/// The registered class of that name; null when there is none. Valid for the life of the process.
/// Thread-safe.
const PlugInClass* classNamed(std::string_view name);

}  // namespace tallbook
