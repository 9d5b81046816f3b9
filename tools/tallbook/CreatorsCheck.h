#pragma once

#include <string>
#include <vector>

#include "tools/tallbook/FileCheck.h"

namespace tallbook::tool {

/// The wrong entries of the AccountCreators files, each "broken".
std::vector<Finding> findingsOfCreators();
/// What the classes of all modules offer and lack, "fit" or "broken". Each module is loaded in a
/// process of its own, so that the rest are looked at whatever its code does.
std::vector<Finding> findingsOfModules();
/// What to do about a failure in the library's own words: it is the device's creators, or the
/// installation.
std::string adviceOnFailure();

}  // namespace tallbook::tool
