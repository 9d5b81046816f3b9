#include <iostream>

#include "tools/common/Dataclasses.h"
#include "tools/common/Table.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/RecordSummary.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {

ExitCode show(const Options& options, const std::string& identifier) {
  const auto store = storeToRead();
  const auto record = recordNamed(*store, identifier);
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
