// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "tallbook/Export.h"

namespace tallbook {

/// What a process may settle before it first uses the library.
struct HostOptions {
  /// Who gets the library's messages.
  enum class Log {
    System,         ///< the system's journal, standard error where there is none
    StandardError,  ///< standard error
    Nowhere         ///< dropped; messages are not even formatted
  };

  /// Root of the device tree; empty for the running system itself.
  std::string root;
  /// Where the library log goes. Loading, changing and saving accounts write their dictionaries
  /// there, user names and hosts included: a program whose accounts are nobody's business in the
  /// journal says `Nowhere`.
  Log log = Log::System;
  /// Drops the messages that a migration writes for whoever sits at the console.
  bool isSilent = false;
  /// Loads the modules of a device tree although it belongs to another user than the process's:
  /// they are that user's code. The running system's modules are always loaded.
  bool trustsModules = false;
  /// Leaves the device as it is: what the process changes in files is changed in memory, where it
  /// alone sees it; it takes no lock, loads no module and sends no notice. A change that the system
  /// would refuse fails as it would. Reading leaves not even access times behind where the kernel
  /// permits that (`O_NOATIME`: to a file's owner and to the superuser).
  bool isPreview = false;
};

/// Sets the process up, while no other thread uses the library. Records and stores made before must
/// not be used any more. Throws InternalConsistencyFailure, and leaves the process as it was, for a
/// root that is no folder.
TALLBOOK_EXPORT void configureHost(const HostOptions& options);

}  // namespace tallbook
