// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsHistory.h"

#include "tools/common/AccountsFile.h"
#include "tools/common/Table.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/FileDifferences.h"

namespace tallbook::tool {
namespace {

AccountsHistory::Content presentContent() {
  const AccountsFile file = readAccountsFile();
  return {file.topLevel, file.topLevel ? "" : "there is no accounts file at present"};
}

ExitCode forgetGenerations() {
  const auto remaining = AccountsHistory::forget();
  for (const auto& [name, problem] : remaining) {
    note((name.empty() ? "the generations" : name) + " cannot be removed: " + problem);
  }
  return remaining.empty() ? ExitCode::Done : ExitCode::NotSaved;
}

}  // namespace

ExitCode history(const Options& options) {
  if (options.forget) return forgetGenerations();
  Table table({{"GENERATION"}, {"KEPT"}, {"BYTES"}, {"CHANGED AFTERWARDS", Fit::Break}});
  JSON array = JSON::array();
  AccountsHistory::Content after = presentContent();
  for (const AccountsGeneration& generation : generations()) {
    AccountsHistory::Content before = AccountsHistory::content(generation.name);
    // What the saves after the generation changed, until the next one was kept.
    const std::string& problem = before.accountsFile ? after.problem : before.problem;
    AccountsFileDifferences changes;
    if (problem.empty()) changes = differencesBetween(before.accountsFile, after.accountsFile);
    if (options.json) {
      JSON& object =
          array.emplace_back(JSON{{"generation", generation.name}, {"bytes", generation.size}});
      if (problem.empty()) {
        object["changes"] = jsonFromDifferences(changes);
      } else {
        object["problem"] = problem;
      }
    } else {
      table.add({generation.name, localTimeText(generation.kept), std::to_string(generation.size),
                 problem.empty() ? summaryOfDifferences(changes) : "unknown: " + problem});
    }
    after = std::move(before);
  }
  if (options.json) {
    printJSON(array);
  } else {
    table.print();
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
