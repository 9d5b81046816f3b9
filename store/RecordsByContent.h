// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

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
  /// The hash goes with the record: hashing reads all of it, and so does comparing, which records
  /// that only share a bucket must not cost.
  struct Content {
    explicit Content(const DictionaryRef& of) noexcept;
    friend bool operator==(const Content& a, const Content& b) noexcept {
      return a.hash == b.hash && equalContent(a.record, b.record);
    }

    DictionaryRef record;
    std::size_t hash;
  };
  struct HashOfContent {
    std::size_t operator()(const Content& content) const noexcept { return content.hash; }
  };
  struct Positions {
    std::vector<std::size_t> list;
    std::size_t taken = 0;
  };

  std::unordered_map<Content, Positions, HashOfContent> _positions;
};

}  // namespace tallbook
