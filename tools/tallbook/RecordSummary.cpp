#include "tools/tallbook/RecordSummary.h"

#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {

JSON summaryOf(const BasicAccount& record) {
  JSON object = JSON::object();
  const std::string identifier = storedIdentifier(record);
  object["identifier"] = identifier.empty() ? JSON() : JSON(identifier);
  object["name"] = nameOf(record);
  object["type"] = record.type().str();
  object["class"] = record.accountClass().str();
  object["enabled"] = jsonFromValue(record.enabledDataclasses());
  return object;
}

}  // namespace tallbook::tool
