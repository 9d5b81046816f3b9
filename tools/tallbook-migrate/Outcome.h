#pragma once

#include <string_view>

namespace tallbook::migrate {

/// What became of an account.
enum class Outcome {
  Unchanged,
  Upgraded,      ///< by version steps
  Repaired,      ///< by loading alone
  Changed,       ///< in a way that nothing known explains
  Converted,     ///< from a legacy file
  NotConverted,  ///< stays in its legacy file
  Wrapped,       ///< stands in an umbrella account now
  Added,
  Folded,    ///< into a mail account
  Replaced,  ///< by another account
  Dropped
};

std::string_view nameOf(Outcome outcome);

}  // namespace tallbook::migrate
