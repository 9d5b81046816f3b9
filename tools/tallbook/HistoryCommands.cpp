#include <iostream>

#include "tallbook/AccountsHistory.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Table.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/FileDifferences.h"
#include "tools/tallbook/LocalTimeText.h"
#include "tools/tallbook/WantedAccounts.h"

namespace tallbook::tool {
namespace {

std::vector<AccountsGeneration> generations() {
  AccountsHistory::List list = AccountsHistory::list();
  if (list.problem.empty()) return std::move(list.generations);
  throw Failure(ExitCode::Unreadable,
                "the generations cannot be listed: " + list.problem + "; run as mobile");
}

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

DictionaryRef contentToRestore(const Options& options, const std::string& name) {
  const AccountsHistory::Content content = AccountsHistory::content(name);
  if (!content.accountsFile) {
    throw Failure(ExitCode::NotFound, "\"" + name + "\": " + content.problem +
                                          "; \"tallbook history\" lists the generations");
  }
  AccountsFile file;
  file.topLevel = content.accountsFile;
  file.path = name;
  requireNoUpgradeAhead(file, options);
  return file.topLevel;
}

AccountsManager::AccountList recordsOf(const Dictionary& accountsFile) {
  AccountsManager::AccountList records;
  std::size_t unknown = 0;
  for (const Value& element : accountsFile[kPlistAccountsKey].array()) {
    const DictionaryRef properties = element.dictionary();
    auto record = properties ? BasicAccount::initWithProperties(properties) : nullptr;
    if (record) {
      records.push_back(std::move(record));
    } else {
      ++unknown;
    }
  }
  if (unknown > 0) {
    note(std::to_string(unknown) + " of its records cannot be loaded and are not put back");
  }
  return records;
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

ExitCode restore(const Options& options, const std::string& generation) {
  const DictionaryRef wanted = contentToRestore(options, generation);
  const EditableStore store(options);
  const DictionaryRef before = accountsOf(store);
  AccountsManager::AccountTypes types;
  for (const auto& account : *store->allBasicAccounts()) types.push_back(account->type());
  store->replaceAccountsWithTypesWithAccounts(types, recordsOf(*wanted));
  showAndSave(options, store, before);
  return ExitCode::Done;
}

ExitCode undo(const Options& options) {
  const std::vector<AccountsGeneration> kept = generations();
  if (kept.empty()) throw Failure(ExitCode::NotFound, "no generation was kept to go back to");
  return restore(options, kept.front().name);
}

}  // namespace tallbook::tool
