#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "tools/tallbook-migrate/Device.h"
#include "tools/tallbook-migrate/Entries.h"

namespace tallbook::migrate {

/// The accounts before and after a migration, and which of them are the same.
class AccountMatches {
 public:
  AccountMatches(const DeviceState& before, const DeviceState& after);

  const std::vector<Entry>& before() const { return _before; }
  const std::vector<Entry>& after() const { return _after; }
  /// The place before of an account that is there after, and the other way round.
  std::optional<std::size_t> placeBefore(std::size_t after) const { return _placesBefore[after]; }
  std::optional<std::size_t> placeAfter(std::size_t before) const { return _placesAfter[before]; }
  /// The version at which the accounts file entered the chain of steps; `kNoStep` where the chain
  /// did not run.
  std::uint64_t entryVersion() const { return _entryVersion; }
  /// Whether a converted legacy file put its own accounts in this one's place.
  bool isReplaced(const Entry& entry) const;
  /// Whether a converted legacy file has an account of this one's identifier. The save merges the
  /// two, and what the accounts file has counts.
  bool isMet(const Entry& entry) const;

 private:
  /// A legacy file's claim on the accounts of the store.
  struct Claim {
    bool isMade = false;
    std::vector<std::string> types;
    std::unordered_set<std::string> identifiers;
  };

  Claim claimOf(const LegacyFile& before, const LegacyFile& after, std::vector<std::string> types,
                bool isExchange) const;
  void match();
  void pair(std::size_t before, std::size_t after);

  std::vector<Entry> _before, _after;
  std::vector<std::optional<std::size_t>> _placesBefore, _placesAfter;
  std::uint64_t _entryVersion;
  bool _isRemovalOnly;
  Claim _mail, _exchange;
};

}  // namespace tallbook::migrate
