#pragma once

#include <string>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// Why no record can be made of the element of a list of records; empty where one can.
std::string whyNoRecord(const Value& element);
/// The same, and why the next load drops a top-level element of which a record can be made.
std::string whyDropped(const Value& element);

}  // namespace tallbook::tool
