#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/tallbook-migrate/Device.h"
#include "tools/tallbook-migrate/Outcome.h"
#include "tools/tallbook-migrate/UpgradeSteps.h"

namespace tallbook::migrate {

/// What became of one account.
struct Fate {
  Outcome outcome = Outcome::Unchanged;
  std::string name, type, identifier;
  bool isIdentifierNew = false;  ///< made by the migration: another one every time
  std::string why;               ///< where it came from, or why it is gone
  Explanation changes;
  std::optional<std::size_t> parent;  ///< the parent's place among the fates

  /// `why` and the changes on one line.
  std::string text() const;
};

/// What became of every account, worked out from the device before and after a migration: those
/// that are there in their order, then those that are gone. `whyDropped` says why a load drops an
/// element of an accounts file, and nothing where it does not.
std::vector<Fate> fatesOfAccounts(const DeviceState& before, const DeviceState& after,
                                  const std::function<std::string(const Value&)>& whyDropped);

}  // namespace tallbook::migrate
