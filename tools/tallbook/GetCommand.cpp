// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <iostream>

#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {

ExitCode get(const Options& options) {
  const auto store = storeToRead();
  const auto record = recordNamed(*store, options.account);
  Value value = record->accountPropertyForKey(options.key);
  if (value.isNull() && options.otherwise) value = *options.otherwise;
  if (value.isNull()) {
    throw Failure(ExitCode::NotFound, "the account has no \"" + options.key +
                                          "\"; \"tallbook show " + options.account +
                                          "\" prints the keys it has");
  }
  if (options.json) {
    printJSON(jsonFromValue(value));
  } else {
    std::cout << shown(plainText(value)) << '\n';
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
