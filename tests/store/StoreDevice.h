// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tallbook/AccountsManager.h"

#include "tests/support/Device.h"

namespace tallbook {

/// A record dictionary of a mail account that needs no repair, with further entries.
DictionaryRef record(const String& identifier,
                     std::initializer_list<std::pair<String, Value>> more = {});
/// The same of another type.
DictionaryRef recordOfType(const String& type, const String& identifier,
                           std::initializer_list<std::pair<String, Value>> more = {});

/// A device whose accounts are of the shipped types and whose notifier class, `heard`, listens to
/// Mail and Calendars of mail and Exchange accounts.
class StoreDevice : public ThrowAwayDevice {
 protected:
  StoreDevice();

  /// Change records that the notifier received, as "code identifier [original dataclasses]".
  static std::vector<std::string>& heard();
  /// Identifiers of the top-level records, in store order, parted by blanks.
  static std::string order(const AccountsManager& store);
  /// The record that the accounts file holds under the identifier; null when it holds none.
  DictionaryRef stored(std::string_view identifier) const;
};

}  // namespace tallbook
