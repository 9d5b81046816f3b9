// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <iostream>

#include "tallbook/DataclassNames.h"

#include "tools/common/Table.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {
namespace {

JSON description(const String& type) {
  JSON dataclasses = JSON::array();
  if (const ArrayRef supported = BasicAccount::supportedDataclassesForAccountType(type)) {
    for (const Value& element : *supported) {
      const String dataclass = element.string();
      JSON entry = JSON::object();
      entry["dataclass"] = dataclass.str();
      entry["enableActions"] =
          jsonFromValue(BasicAccount::userActionsToEnableDataclassForAccountType(dataclass, type));
      entry["disableActions"] =
          jsonFromValue(BasicAccount::userActionsToDisableDataclassForAccountType(dataclass, type));
      entry["multipleStores"] = BasicAccount::multipleStoresSupportedByDataclass(dataclass);
      entry["displaySwitch"] = BasicAccount::displayToggleForDataclass(dataclass);
      entry["userConfirmation"] = BasicAccount::userConfirmationIsRequiredByDataclass(dataclass);
      dataclasses.push_back(std::move(entry));
    }
  }
  JSON object = JSON::object();
  object["type"] = type.str();
  object["classes"] = jsonFromValue(BasicAccount::accountClassesForAccountType(type));
  object["dataclasses"] = std::move(dataclasses);
  object["deleteActions"] = jsonFromValue(BasicAccount::deleteAccountActionsForAccountType(type));
  object["remindersSeparately"] = BasicAccount::showRemindersSeparatelyForAccountType(type);
  return object;
}

void printCatalogue() {
  Table table({{"TYPE"}, {"DATACLASSES", Fit::Break}});
  for (const String& type : BasicAccount::allAccountTypes()) {
    table.add({type.str(),
               shortNamesOfDataclasses(BasicAccount::supportedDataclassesForAccountType(type))});
  }
  table.print();
}

void printType(const String& type) {
  Table table({{"DATACLASS"}, {"WHEN TURNED ON", Fit::Break}, {"WHEN TURNED OFF", Fit::Break}});
  if (const ArrayRef supported = BasicAccount::supportedDataclassesForAccountType(type)) {
    for (const Value& element : *supported) {
      const String dataclass = element.string();
      table.add(
          {shortNameOfDataclass(dataclass),
           joined(BasicAccount::userActionsToEnableDataclassForAccountType(dataclass, type)),
           joined(BasicAccount::userActionsToDisableDataclassForAccountType(dataclass, type))});
    }
  }
  table.print();
  std::cout << "\nClasses:              "
            << joined(BasicAccount::accountClassesForAccountType(type))
            << "\nWhen deleted:         "
            << joined(BasicAccount::deleteAccountActionsForAccountType(type))
            << "\nReminders separately: "
            << (BasicAccount::showRemindersSeparatelyForAccountType(type) ? "yes" : "no") << '\n';
}

}  // namespace

ExitCode types(const Options& options) {
  const std::string& type = options.type;
  if (!type.empty()) requireAccountType(type);
  if (options.json && type.empty()) {
    JSON all = JSON::array();
    for (const String& each : BasicAccount::allAccountTypes()) all.push_back(description(each));
    printJSON(all);
  } else if (options.json) {
    printJSON(description(type));
  } else if (type.empty()) {
    printCatalogue();
  } else {
    printType(type);
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
