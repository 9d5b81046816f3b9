#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// Something that the library does not take as it stands, or that is to be known of it.
struct Finding {
  /// "dropped": not loaded, and gone once a program saves all that it loaded; "repaired": changed
  /// by the next load; "ignored": kept, and counts as absent; "ambiguous": taken, but not for what
  /// it seems; "broken": fails whoever needs it. No faults are "fit", a class that does what its
  /// role is there for, and "leftover", a file that a save left.
  std::string_view effect;
  std::string place;  ///< "Version", "Accounts[3] (Gmail)", "Accounts[3].ChildAccounts[0]", a path
  std::string why;
};

/// The first four in the top level of an accounts file, in the file's order.
std::vector<Finding> findingsOf(const Dictionary& content);

}  // namespace tallbook::tool
