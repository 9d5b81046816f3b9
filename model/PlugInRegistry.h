#pragma once

#include <string>
#include <string_view>

#include "tallbook/PlugInClass.h"

namespace tallbook {

/// Loads the code module at `framework`, a path below the system root, and registers its classes;
/// nothing more happens for a module that is loaded already. The answer is the module's full path.
/// Throws InternalConsistencyFailure when it cannot be loaded, or was built for another version of
/// the plug-in interface. Modules stay loaded. Thread-safe.
std::string loadAccountCreatorFramework(std::string_view framework);

/// The registered class of that name; null when there is none. Valid for the life of the process.
/// Thread-safe.
const PlugInClass* classNamed(std::string_view name);

}  // namespace tallbook
