#include "tools/tallbook/KeptGenerations.h"

#include "tools/common/Outcome.h"

namespace tallbook::tool {

std::vector<AccountsGeneration> generations() {
  AccountsHistory::List list = AccountsHistory::list();
  if (list.problem.empty()) return std::move(list.generations);
  throw Failure(ExitCode::Unreadable,
                "the generations cannot be listed: " + list.problem + "; run as mobile");
}

}  // namespace tallbook::tool
