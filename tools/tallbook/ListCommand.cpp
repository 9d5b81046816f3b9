#include <iostream>
#include <map>

#include "tallbook/Vocabulary.h"

#include "tools/common/Dataclasses.h"
#include "tools/common/Table.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

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

JSON summary(const BasicAccount& record) {
  JSON object = JSON::object();
  const std::string identifier = storedIdentifier(record);
  object["identifier"] = identifier.empty() ? JSON() : JSON(identifier);
  object["name"] = nameOf(record);
  object["type"] = record.type().str();
  object["class"] = record.accountClass().str();
  object["enabled"] = jsonFromValue(record.enabledDataclasses());
  return object;
}

std::vector<std::string> row(const BasicAccount& record) {
  const std::string identifier = storedIdentifier(record);
  return {nameOf(record), record.type().str(), identifier.empty() ? "(none)" : identifier,
          shortNames(record.enabledDataclasses())};
}

}  // namespace

ExitCode list(const Options& options, const std::vector<std::string>& types) {
  for (const std::string& type : types) requireAccountType(type);
  const auto store = storeToRead();
  const auto found = families(*store, AccountsManager::AccountTypes(types.begin(), types.end()));
  if (options.json) {
    JSON array = JSON::array();
    for (const auto& [record, children] : found) {
      JSON object = summary(*record);
      object["children"] = JSON::array();
      for (const auto& child : children) object["children"].push_back(summary(*child));
      array.push_back(std::move(object));
    }
    printJSON(array);
  } else if (!found.empty()) {
    Table table(
        {{"NAME", Fit::Cut}, {"TYPE"}, {"IDENTIFIER", Fit::Middle}, {"ENABLED", Fit::Break}},
        Table::Shape::Tree);
    for (const auto& [record, children] : found) {
      const Table::Row parent = table.add(row(*record));
      for (const auto& child : children) table.add(row(*child), parent);
    }
    table.print();
  }
  if (!found.empty() || types.empty()) return ExitCode::Done;
  note("no account is of such a type");
  return ExitCode::NotFound;
}

ExitCode show(const Options& options, const std::string& identifier) {
  const auto store = storeToRead();
  const auto record = recordNamed(*store, identifier);
  if (options.json) {
    JSON object = summary(*record);
    object["parent"] = jsonFromValue(record->parentAccountIdentifier());
    object["provisioned"] = jsonFromValue(record->provisionedDataclasses());
    object["supported"] = jsonFromValue(record->supportedDataclasses());
    object["properties"] = jsonFromValue(record->properties());
    printJSON(object);
    return ExitCode::Done;
  }
  Table table({{"KEY", Fit::Cut}, {"KIND"}, {"VALUE", Fit::Break}});
  for (const auto& [key, value] : *record->properties()) {
    table.add({key.str(), std::string(nameOfKind(value.kind())), lineText(value)});
  }
  table.print();
  std::cout << "\nSupported:   " << shortNames(record->supportedDataclasses())
            << "\nProvisioned: " << shortNames(record->provisionedDataclasses())
            << "\nEnabled:     " << shortNames(record->enabledDataclasses()) << '\n';
  if (const auto& parent = record->parentAccount()) {
    std::cout << "Parent:      " << lineText(nameOf(*parent)) << ", "
              << shown(parent->identifier().str()) << '\n';
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
