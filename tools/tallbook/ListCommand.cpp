// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <map>

#include "tallbook/DataclassNames.h"

#include "tools/common/Table.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {
namespace {

/// A record that was picked, before the picked ones among its children.
using Family = std::pair<std::shared_ptr<BasicAccount>, AccountsManager::AccountList>;

std::vector<Family> families(const AccountsManager& store,
                             const AccountsManager::AccountTypes& of) {
  std::vector<Family> result;
  std::map<const BasicAccount*, std::size_t> positions;
  for (const auto& record :
       of.empty() ? *store.allBasicAccounts() : store.basicAccountsWithTypes(of)) {
    positions.emplace(record.get(), result.size());
    result.emplace_back(record, AccountsManager::AccountList());
  }
  for (const auto& record : store.allBasicSyncableAccounts()) {
    const auto parent = positions.find(record->parentAccount().get());
    if (parent != positions.end()) result[parent->second].second.push_back(record);
  }
  return result;
}

std::vector<std::string> row(const BasicAccount& record) {
  const std::string identifier = storedIdentifier(record);
  return {record.nameForPeople(), record.type().str(), identifier.empty() ? "(none)" : identifier,
          shortNamesOfDataclasses(record.enabledDataclasses())};
}

}  // namespace

ExitCode list(const Options& options) {
  const std::vector<std::string>& types = options.types;
  for (const std::string& type : types) requireAccountType(type);
  const auto store = storeToRead();
  const auto found = families(*store, AccountsManager::AccountTypes(types.begin(), types.end()));
  if (options.json) {
    JSON array = JSON::array();
    for (const auto& [record, children] : found) {
      JSON object = summaryOf(*record);
      object["children"] = JSON::array();
      for (const auto& child : children) object["children"].push_back(summaryOf(*child));
      array.push_back(std::move(object));
    }
    printJSON(array);
  } else if (!found.empty()) {
    Table table(
        {{"NAME", Fit::Cut}, {"TYPE"}, {"IDENTIFIER", Fit::Middle}, {"ENABLED", Fit::Break}});
    for (const auto& [record, children] : found) {
      table.add(row(*record));
      for (const auto& child : children) table.add(row(*child), 1);
    }
    table.print();
  }
  if (!found.empty() || types.empty()) return ExitCode::Done;
  note("no account is of such a type");
  return ExitCode::NotFound;
}

}  // namespace tallbook::tool
