#include "tallbook/AccountsHistory.h"

#include "tools/common/AccountsFile.h"
#include "tools/common/Table.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/FileDifferences.h"
#include "tools/tallbook/KeptGenerations.h"
#include "tools/tallbook/LocalTimeText.h"

namespace tallbook::tool {
namespace {

/// What the saves after a generation changed, until the next one was kept.
struct Change {
  std::vector<RecordChange> differences;
  std::string problem;  ///< why that cannot be told; else empty

  std::string text() const {
    return problem.empty() ? summaryOfDifferences(differences) : "unknown: " + problem;
  }
};

Change changeBetween(const AccountsHistory::Content& before,
                     const AccountsHistory::Content& after) {
  for (const auto* side : {&before, &after}) {
    if (!side->accountsFile) return {{}, side->problem};
  }
  return {differencesBetween(*before.accountsFile, *after.accountsFile), {}};
}

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

ExitCode history(const Options& options, bool forget) {
  if (forget) return forgetGenerations();
  Table table({{"GENERATION"}, {"KEPT"}, {"BYTES"}, {"CHANGED AFTERWARDS", Fit::Break}});
  JSON array = JSON::array();
  AccountsHistory::Content after = presentContent();
  for (const AccountsGeneration& generation : generations()) {
    AccountsHistory::Content before = AccountsHistory::content(generation.name);
    const Change change = changeBetween(before, after);
    if (options.json) {
      JSON object{{"generation", generation.name}, {"bytes", generation.size}};
      if (change.problem.empty()) {
        object["changes"] = jsonFromDifferences(change.differences);
      } else {
        object["problem"] = change.problem;
      }
      array.push_back(std::move(object));
    } else {
      table.add({generation.name, localTimeText(generation.kept), std::to_string(generation.size),
                 change.text()});
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
