#pragma once

#include "tallbook/BasicAccount.h"

#include "tools/common/Output.h"

namespace tallbook::tool {

/// What programs hear of every account that is listed or shown; null for an identifier that the
/// file does not hold.
JSON summaryOf(const BasicAccount& record);

}  // namespace tallbook::tool
