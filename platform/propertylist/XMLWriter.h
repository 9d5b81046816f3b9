#pragma once

#include "tallbook/PropertyList.h"

namespace tallbook {

/// Throws MalformedPropertyList, with the place, for what XML cannot carry.
XMLPropertyList xmlText(const Value& root);

}  // namespace tallbook
