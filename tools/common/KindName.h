#pragma once

#include <string_view>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// "string", "integer", ...
std::string_view nameOfKind(Value::Kind kind);

}  // namespace tallbook::tool
