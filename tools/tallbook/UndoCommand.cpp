// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/AccountsFile.h"
#include "tools/tallbook/Commands.h"

namespace tallbook::tool {

ExitCode undo(const Options& options) {
  const std::vector<AccountsGeneration> kept = generations();
  if (kept.empty()) throw Failure(ExitCode::NotFound, "no generation was kept to go back to");
  Options newest = options;
  newest.generation = kept.front().name;
  return restore(newest);
}

}  // namespace tallbook::tool
