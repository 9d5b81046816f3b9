// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"

namespace tallbook::tool {

ExitCode wait(const Options& options) {
  using Clock = std::chrono::steady_clock;
  std::optional<std::chrono::milliseconds> timeout;
  constexpr double kLongest = 1e9;  // as good as for ever, and no overflow of what counts it
  if (options.seconds) {
    timeout.emplace(static_cast<std::int64_t>(std::min(kLongest, *options.seconds) * 1000));
  }
  const auto begin = Clock::now();
  if (AccountsManager::waitForMigrationToFinish(noteHolderOfMigrationLock, timeout)) {
    return ExitCode::Done;
  }
  if (timeout && Clock::now() - begin >= *timeout) {
    throw Failure(ExitCode::NotFound, "a migration still runs");
  }
  throw Failure(ExitCode::NotSaved,
                std::string("the migration lock cannot be made, so nobody can tell whether a "
                            "migration runs; make ") +
                    kAccountMigrationLockFilename +
                    " below the root a file that you may read, in a folder that is there");
}

}  // namespace tallbook::tool
