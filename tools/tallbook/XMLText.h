#pragma once

#include <string>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// A property list in the XML encoding.
struct XMLText {
  std::string text;
  /// Whether a date lost its fraction of a second, which the encoding has no place for.
  bool hasShortenedDates = false;
};

/// Throws Failure, naming the place, for a value that XML cannot carry: control characters, null, a
/// UID, a date outside the years 1 to 9999.
XMLText xmlPropertyList(const Value& root);

}  // namespace tallbook::tool
