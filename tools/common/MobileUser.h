#pragma once

#include <filesystem>

namespace tallbook::tool {

// Both write etc/passwd and etc/group below the root of a device tree, and throw Failure where that
// cannot be.

/// The calling user is "mobile" there.
void makeCallerMobile(const std::filesystem::path& root);
/// "mobile" is there who it is on the running system, if anybody.
void copyMobile(const std::filesystem::path& root);

}  // namespace tallbook::tool
