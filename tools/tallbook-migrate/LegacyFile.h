#pragma once

#include <string>

#include "tallbook/Value.h"

namespace tallbook::migrate {

/// A legacy file as it lies on the disk: a damaged one is told from a missing one, so that nobody
/// takes accounts that could not be read for none.
struct LegacyFile {
  enum class State {
    Missing,
    Unreadable,  ///< it could not be read, is no property list, or has no dictionary at the top
    Read
  };

  State state = State::Missing;
  std::string problem;    ///< why it is unreadable, on one line
  DictionaryRef content;  ///< the top level; null unless read
};

LegacyFile readLegacyFile(const std::string& path);

}  // namespace tallbook::migrate
