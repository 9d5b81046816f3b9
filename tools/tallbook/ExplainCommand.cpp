// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <iostream>

#include "tallbook/DataclassNames.h"

#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {

ExitCode explain(const Options& options) {
  const ArrayRef named =
      options.dataclass.empty() ? nullptr : Array::make({requireDataclass(options.dataclass)});
  const auto store = storeToRead();
  const auto record = recordNamed(*store, options.account);
  JSON array = JSON::array();
  const ArrayRef asked = named ? named : record->supportedDataclasses();
  for (const Value& each : *asked) {
    const String full = each.string();
    const DataclassExplanation why = record->explanationForDataclass(full);
    if (options.json) {
      array.push_back({{"identifier", identifierOf(*record)},
                       {"dataclass", full.str()},
                       {"on", why.isOn},
                       {"reason", why.reason},
                       {"text", why.text}});
    } else {
      std::cout << shortNameOfDataclass(full) << " is "
                << (why.isOn ? styled(Style::Added, "on") : styled(Style::Removed, "off")) << ": "
                << shown(why.text) << ".\n";
    }
  }
  if (options.json) printJSON(named ? array.front() : array);
  return ExitCode::Done;
}

}  // namespace tallbook::tool
