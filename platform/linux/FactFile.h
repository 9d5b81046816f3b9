#pragma once

#include <string>

#include "tallbook/Value.h"

namespace tallbook {

/// The dictionary in a property-list file, read afresh; null where there is none. A file that is
/// there and holds none sets `problem`, where given, to a one-line reason.
DictionaryRef dictionaryInFile(const std::string& path, std::string* problem = nullptr);

}  // namespace tallbook
