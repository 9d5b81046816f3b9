// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallbook::fuzz {

/// A file in the binary encoding, taken apart, so that its objects can be changed and what says
/// where they lie still fits.
struct ObjectTable {
  std::vector<std::string> objects;  ///< each with its marker, in the order of their numbers
  std::size_t referenceSize = 1;
  std::uint64_t top = 0;

  /// nullopt for what has no such table.
  static std::optional<ObjectTable> of(std::string_view file);
  /// The file of these objects. `offsetSize` is raised to what the offsets take.
  std::string file(std::size_t offsetSize = 1) const;
};

/// Appends the lowest `size` bytes of a number, the highest first.
void appendNumber(std::string& to, std::uint64_t number, std::size_t size);

}  // namespace tallbook::fuzz
