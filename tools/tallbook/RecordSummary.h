#pragma once

#include "tallbook/BasicAccount.h"

#include "tools/common/Output.h"

namespace tallbook::tool {

/// The record's identifier as programs hear it; null for one that the file does not hold.
JSON identifierOf(const BasicAccount& record);
/// What programs hear of every account that is listed or shown.
JSON summaryOf(const BasicAccount& record);

}  // namespace tallbook::tool
