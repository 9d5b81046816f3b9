// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Export.h"
#include "tallbook/String.h"

namespace tallbook {

/// An entry of the creators information: a class in a module that serves an account type. Texts
/// that the entry lacks are empty.
struct AccountCreator {
  std::string
      place;  ///< the file and what in it, "/usr/share/tallbook/AccountCreators.plist, Mail[0]"
  String accountType;     ///< the type that it serves; null for what is no entry of a known type
  std::string role;       ///< "FullAccount", "SyncAccount" or "NotifierAccount"
  std::string framework;  ///< the module's path below the system root
  std::string className;  ///< the name that the module registers the class under
  /// Why it serves nobody, on one line; empty for a sound entry. With a fault, the entry may also
  /// be a whole file, one that lacks a type, or what stands in the place of entries.
  std::string fault;
};

/// The entries that count: those of a type in the device's own AccountCreators file, or where that
/// lacks the type, in the shipped one, and those that drop-ins add. Of a drop-in with a fault, here
/// or in AccountTypesProperties.d, nothing counts; it is listed with the first one. Read afresh;
/// loads no module. Throws InternalConsistencyFailure where the catalogue of account types cannot
/// be read.
[[nodiscard]] TALLBOOK_EXPORT std::vector<AccountCreator> accountCreators();

/// Of the class operations that count for a creator's role, those that its class has and has not.
struct TALLBOOK_EXPORT CreatorOperations {
  /// Their names, such as "noteAccountChanges"; both empty where no class was found.
  /// @{
  std::vector<std::string_view> offered, lacking;
  /// @}
  /// Why the class cannot do what its role is there for, on one line; else empty.
  std::string fault;

  /// "it makes no sync accounts; offers nothing and lacks accountToRefreshForBasicAccount".
  std::string text() const;
};

/// Loads the module of a sound entry, for good and with all that its code does then, and looks at
/// the class. A module that cannot be loaded and a class that is not there are faults.
[[nodiscard]] TALLBOOK_EXPORT CreatorOperations operationsOfCreator(const AccountCreator& creator);

}  // namespace tallbook
