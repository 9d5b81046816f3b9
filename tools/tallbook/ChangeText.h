#pragma once

#include <string>

#include "tallbook/ChangedAccount.h"

#include "tools/common/Output.h"

namespace tallbook::tool {

/// What became of an account, on one line: `Work: Calendars off; DisplayName "Work" -> "Office"`.
/// It is called by the name that it had, a child by its account's before its own.
std::string textOf(const ChangedAccount& change);
/// The same with all of the values, in the form of `diff`.
JSON jsonFrom(const ChangedAccount& change);

}  // namespace tallbook::tool
