#pragma once

#include <string>
#include <string_view>

#include "tallbook/BasicAccount.h"

namespace tallbook::tool {

/// Why a dataclass is on or off for a record.
struct Explanation {
  bool isOn = false;
  /// For programs: "enabled", "parent", "unsupported", "restricted", "unprovisioned", "disabled".
  std::string_view reason;
  std::string text;  ///< for people, one sentence without a full stop
};

Explanation explanation(const BasicAccount& record, std::string_view dataclass);

}  // namespace tallbook::tool
