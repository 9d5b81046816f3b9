#pragma once

#include <string>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// A property list with a dictionary at its top, as it lies on the disk: a damaged file is told
/// from a missing one, so that nobody takes accounts that could not be read for none.
struct DictionaryFile {
  enum class State {
    Missing,
    Unreadable,  ///< not a regular file, no property list, or no dictionary at the top
    Read
  };

  State state = State::Missing;
  std::string path;
  std::string problem;    ///< why it is unreadable, on one line
  DictionaryRef content;  ///< the top level; null unless read
};

DictionaryFile readDictionaryFile(const std::string& path);

}  // namespace tallbook::tool
