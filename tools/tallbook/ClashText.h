#pragma once

#include <string>

#include "tallbook/AccountsManager.h"
#include "tallbook/SaveReceipt.h"

namespace tallbook::tool {

/// What a person is to know of a clash, on one line: the account, what of it, and both values,
/// shortened. `store` is the one that was saved.
std::string textOfClash(const SaveClash& clash, const AccountsManager& store);

}  // namespace tallbook::tool
