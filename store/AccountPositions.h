// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <unordered_map>

#include "tallbook/AccountsManager.h"

namespace tallbook {

/// Where each record object stands in a list. A list may hold one object several times, as where it
/// took the places of several records with one identifier.
class AccountPositions {
 public:
  explicit AccountPositions(const AccountsManager::AccountList& accounts) {
    _places.reserve(accounts.size());
    for (std::size_t at = 0; at < accounts.size(); ++at) add(accounts[at].get(), at);
  }

  /// Nullopt for an object that is not in the list.
  std::optional<std::size_t> firstOf(const BasicAccount* account) const {
    const auto found = _places.find(account);
    if (found == _places.end()) return std::nullopt;
    return *found->second.begin();
  }
  void add(const BasicAccount* account, std::size_t at) { _places[account].insert(at); }
  /// Forgets that the object, which must be there, is at that place.
  void remove(const BasicAccount* account, std::size_t at) {
    const auto found = _places.find(account);
    found->second.erase(at);
    // Another object may come to the address of one that is gone.
    if (found->second.empty()) _places.erase(found);
  }

 private:
  std::unordered_map<const BasicAccount*, std::set<std::size_t>> _places;  // none of them empty
};

}  // namespace tallbook
