#pragma once

#include <vector>

#include "tallbook/AccountsHistory.h"

namespace tallbook::tool {

/// The generations of the accounts file, the newest first. Throws Failure where they cannot be
/// listed.
std::vector<AccountsGeneration> generations();

}  // namespace tallbook::tool
