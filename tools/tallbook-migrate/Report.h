// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "tools/tallbook-migrate/Story.h"

namespace tallbook::migrate {

struct ReportOptions {
  bool json = false;
  /// Identifiers that the migration made are another time's others.
  bool hidesNewIdentifiers = false;
  bool isQuiet = false;  ///< only looks whether all is explained
};

/// Prints what became of the accounts and of the legacy files on standard output. False where an
/// account is gone for no reason that the migration told.
bool printStory(const Story& story, const ReportOptions& options);

}  // namespace tallbook::migrate
