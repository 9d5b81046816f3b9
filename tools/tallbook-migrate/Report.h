#pragma once

#include <vector>

#include "tools/tallbook-migrate/AccountFates.h"

namespace tallbook::migrate {

struct ReportOptions {
  bool json = false;
  /// Identifiers that the migration made are another time's others.
  bool hidesNewIdentifiers = false;
};

/// Prints what became of the accounts on standard output.
void printFates(const std::vector<Fate>& fates, const ReportOptions& options);

}  // namespace tallbook::migrate
