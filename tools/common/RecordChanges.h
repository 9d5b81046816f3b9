#pragma once

#include <string>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// One difference between two versions of a record. Lists of dataclasses differ dataclass by
/// dataclass; where only their order does, or an empty one came or went, the list itself does.
struct KeyChange {
  enum class Kind { Added, Removed, Changed };

  Kind kind;
  String key;
  String dataclass;  ///< the one that a list gained or lost; null for other changes
  Value before, after;
};

/// Children are accounts of their own, so lists of them are left out.
std::vector<KeyChange> changesBetween(const Dictionary& before, const Dictionary& after);

/// "Mail on", "Mail provisioned", "Port changed".
std::string wordsFor(const KeyChange& change);

}  // namespace tallbook::tool
