// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <iostream>

#include "tallbook/DataclassNames.h"

#include "tools/common/Table.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {

ExitCode show(const Options& options) {
  const auto store = storeToRead();
  const auto record = recordNamed(*store, options.account);
  if (options.json) {
    JSON object = summaryOf(*record);
    object["parent"] = record->parentAccount() ? identifierOf(*record->parentAccount()) : JSON();
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
  std::cout << "\nSupported:   " << shortNamesOfDataclasses(record->supportedDataclasses())
            << "\nProvisioned: " << shortNamesOfDataclasses(record->provisionedDataclasses())
            << "\nEnabled:     " << shortNamesOfDataclasses(record->enabledDataclasses()) << '\n';
  if (const auto& parent = record->parentAccount()) {
    std::cout << "Parent:      " << lineText(parent->nameForPeople()) << ", "
              << shown(parent->identifier().str()) << '\n';
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
