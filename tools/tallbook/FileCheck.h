#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// Something in an accounts file that the library does not take as it stands.
struct Finding {
  /// "dropped": not loaded, and gone once a program saves all that it loaded; "repaired": changed
  /// by the next load; "ignored": kept, and counts as absent; "ambiguous": taken, but not for what
  /// it seems.
  std::string_view effect;
  std::string place;  ///< "Version", "Accounts[3] (Gmail)", "Accounts[3].ChildAccounts[0]"
  std::string why;
};

/// Everything of that sort in the top level of an accounts file, in the file's order.
std::vector<Finding> findingsOf(const Dictionary& content);

}  // namespace tallbook::tool
