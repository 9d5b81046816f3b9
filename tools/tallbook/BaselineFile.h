// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>

#include "tallbook/AccountsWatcher.h"

namespace tallbook::tool {

/// A watcher that goes on from the baseline in the file; null where there is no file yet. Throws
/// Failure for a file that is no baseline or cannot be read.
std::unique_ptr<AccountsWatcher> watcherSince(const std::string& path);
/// Puts a new file of the baseline, which its owner alone may read, in the place of what is there.
/// It is the old or the new one at every moment. Throws Failure where that cannot be.
void keepBaseline(const AccountsWatcher& watcher, const std::string& path);

}  // namespace tallbook::tool
