// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tallbook/AccountProtocols.h"
#include "tallbook/DataMigrator.h"
#include "tallbook/Export.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

/// @file
/// The interface between the library and the modules that it loads.

namespace tallbook {

class BasicAccount;

/// Version of this interface between the library and the modules that it loads; grows with every
/// change that an older module would not survive.
inline constexpr unsigned kPlugInInterfaceVersion = 2;

/// A class that is found by name. Each member but the name is a class operation; an empty one is
/// not offered. The library calls it on the thread of whoever works with the accounts, which may
/// be any: operations are thread-safe. What one throws reaches that caller.
struct PlugInClass {
  std::string name;  ///< as the creators information and `tallbookClassNamed` spell it

  /// A new record of this class with these properties, null when they are rejected. Offered by
  /// classes of full accounts.
  std::function<std::shared_ptr<BasicAccount>(const DictionaryRef& properties)> initWithProperties;

  // A creator of full accounts offers one of these; `classForAccountType` comes first.

  /// Name of the class of full accounts for an account type; null when there is none.
  std::function<String(const String& accountType)> classForAccountType;
  /// The full account of a record, null when none can be made.
  std::function<std::shared_ptr<BasicAccount>(const std::shared_ptr<BasicAccount>& account)>
      accountWithBasicAccount;

  // A creator of sync accounts.

  /// The sync account of a record, null when none can be made.
  std::function<std::shared_ptr<AccountRefreshProtocol>(
      const std::shared_ptr<BasicAccount>& account)>
      accountToRefreshForBasicAccount;

  // A notifier class.

  /// Called just before and just after a dataclass of an account is switched.
  /// @{
  std::function<void(const String& identifier, const String& dataclass)>
      accountWillChangeForDataclass;
  std::function<void(const String& identifier, const String& dataclass)>
      accountDidChangeForDataclass;
  /// @}
  /// Called after a save with an array of change records, which is the notifier's to keep: nothing
  /// that happens to the accounts later changes it.
  std::function<void(const ArrayRef& changes)> noteAccountChanges;

  // The principal class of a data-migration plug-in.

  /// A new migrator, which is the host's.
  std::function<std::unique_ptr<DataMigrator>()> makeDataMigrator;
};

/// Registers a class for as long as the process lives. A module has one static registration for
/// each of its classes. Of two classes with one name the first stays.
///
/// `interfaceVersion` is always `kPlugInInterfaceVersion`, so that the module carries the version
/// that it was built for: a module of another version is refused as one that cannot be loaded,
/// before `make` is called for any of its classes. `make` is called when a class is looked up for
/// the first time, and looks none up itself.
class TALLBOOK_EXPORT PlugInRegistration {
 public:
  /// Registers the class for good; the object itself is not needed any more.
  PlugInRegistration(unsigned interfaceVersion, PlugInClass (*make)());
};

}  // namespace tallbook

/// The registered class of that name; null when there is none. Valid for the life of the process.
/// Thread-safe.
extern "C" [[nodiscard]] TALLBOOK_EXPORT const tallbook::PlugInClass* tallbookClassNamed(
    const char* name);
