#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook {

/// A position that no record has.
inline constexpr std::size_t kNoRecord = static_cast<std::size_t>(-1);

/// Positions of records, to be found by what the records hold, and each given out once. However
/// many there are and however alike, filing and taking one costs what reading it does.
class RecordsByContent {
 public:
  /// The record must not change while it is filed.
  void file(const DictionaryRef& record, std::size_t position);
  /// The first position left of a record with that content; kNoRecord when none is left.
  std::size_t take(const DictionaryRef& content);

 private:
  struct ContentHash {
    std::size_t operator()(const DictionaryRef& record) const noexcept;
  };
  struct ContentEquality {
    bool operator()(const DictionaryRef& a, const DictionaryRef& b) const noexcept {
      return equalContent(a, b);
    }
  };
  struct Positions {
    std::vector<std::size_t> list;
    std::size_t taken = 0;
  };

  std::unordered_map<DictionaryRef, Positions, ContentHash, ContentEquality> _positions;
};

}  // namespace tallbook
