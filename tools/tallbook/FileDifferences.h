#pragma once

#include <string>
#include <vector>

#include "tallbook/Value.h"

#include "tools/common/Output.h"

namespace tallbook::tool {

/// What became of the top level or of one record: a record that came or went counts as one whose
/// every key did.
struct RecordChange {
  struct Key {
    std::string name;
    const Value* before;  ///< null where the key was added
    const Value* after;   ///< null where it was removed
  };

  Style style;
  std::string label;
  std::vector<Key> keys;
};

/// What differs between the top levels of two accounts files, whose values the answer refers to.
std::vector<RecordChange> differencesBetween(const Dictionary& before, const Dictionary& after);

void printDifferences(const std::vector<RecordChange>& changes);
JSON jsonFromDifferences(const std::vector<RecordChange>& changes);
/// All of them on one line: the records, and the keys of those that are there before and after.
std::string summaryOfDifferences(const std::vector<RecordChange>& changes);

}  // namespace tallbook::tool
