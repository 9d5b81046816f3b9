#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "tools/tallbook-migrate/AccountMatches.h"
#include "tools/tallbook-migrate/Outcome.h"

namespace tallbook::migrate {

/// Why accounts are not in the accounts file after a migration.
class GoneAccounts {
 public:
  /// The outcome and its reason in words; no words where none is known.
  using Reason = std::pair<Outcome, std::string>;
  using WhyDropped = std::function<std::string(const Value&)>;

  /// All of them must outlive this.
  GoneAccounts(const DeviceState& before, const DeviceState& after, const AccountMatches& matches,
               const WhyDropped& whyDropped);

  Reason reasonOf(const Entry& was) const;
  /// Whether the legacy file that the account came from is still there.
  bool isFileThere(const Entry& was) const;

 private:
  Reason reasonOfLegacy(const Entry& was) const;
  Reason foldedOrUnknown(const Entry& was) const;
  std::string mailAccountOf(const Dictionary& calDAV) const;

  const DeviceState& _stateBefore;
  const DeviceState& _stateAfter;
  const AccountMatches& _matches;
  const WhyDropped& _whyDropped;
  std::unordered_set<std::string> _identifiersAfter;
  /// Names of the accounts before, by class and user.
  std::unordered_map<std::string, std::string> _namesOfUsers;
};

}  // namespace tallbook::migrate
