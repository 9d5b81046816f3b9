#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook::migrate {

/// Versions of the accounts file at which steps enter that the comparison has to know by name.
inline constexpr std::uint64_t kIdentifiersFrom = 1;  ///< 7A150
inline constexpr std::uint64_t kDeviceLocalFrom = 2;  ///< 7A153
inline constexpr std::uint64_t kFoldingFrom = 4;      ///< 7A242
inline constexpr std::uint64_t kWrappingFrom = 6;     ///< 8B117
inline constexpr std::uint64_t kNoStep = 12;          ///< the chain did not run

/// What one step did to a record, in a few words each.
struct StepNote {
  std::string step;  ///< the system build; "loading" for what every load repairs
  std::vector<std::string> what;
};

/// A record before and after.
struct Subject {
  const Dictionary& before;
  const Dictionary& after;
  String parentClass;  ///< null for a top-level record
};

struct Explanation {
  std::vector<StepNote> steps;           ///< in the order of the chain
  std::vector<std::string> unexplained;  ///< changes that no step makes

  /// Adds a note in its place.
  void add(std::string_view step, const std::string& what);
};

/// Attributes each change of the record to the first step that makes such a change, among those
/// that run on a file of the version `entry`.
Explanation explain(const Subject& subject, std::uint64_t entry);

}  // namespace tallbook::migrate
