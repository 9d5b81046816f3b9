#include <iostream>

#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {

ExitCode get(const Options& options, const std::string& identifier, const std::string& key,
             const std::optional<std::string>& otherwise) {
  const auto store = storeToRead();
  const auto record = recordNamed(*store, identifier);
  Value value = record->accountPropertyForKey(key);
  if (value.isNull() && otherwise) value = *otherwise;
  if (value.isNull()) {
    throw Failure(ExitCode::NotFound, "the account has no \"" + key + "\"; \"tallbook show " +
                                          identifier + "\" prints the keys it has");
  }
  if (options.json) {
    printJSON(jsonFromValue(value));
  } else {
    std::cout << shown(plainText(value)) << '\n';
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
