#include "tools/tallbook/Commands.h"
#include "tools/tallbook/KeptGenerations.h"

namespace tallbook::tool {

ExitCode undo(const Options& options) {
  const std::vector<AccountsGeneration> kept = generations();
  if (kept.empty()) throw Failure(ExitCode::NotFound, "no generation was kept to go back to");
  return restore(options, kept.front().name);
}

}  // namespace tallbook::tool
