#pragma once

#include <filesystem>

namespace tallbook::tool {

/// Writes etc/passwd and etc/group below the root of a device tree; the calling user is "mobile"
/// there. Throws Failure where that cannot be.
void makeCallerMobile(const std::filesystem::path& root);

}  // namespace tallbook::tool
