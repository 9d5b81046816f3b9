#include "tools/tallbook/RecordSummary.h"

#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {

JSON identifierOf(const BasicAccount& record) {
  const std::string identifier = storedIdentifier(record);
  return identifier.empty() ? JSON() : JSON(identifier);
}

JSON summaryOf(const BasicAccount& record) {
  JSON object = JSON::object();
  object["identifier"] = identifierOf(record);
  object["name"] = nameOf(record);
  object["type"] = record.type().str();
  object["class"] = record.accountClass().str();
  object["enabled"] = jsonFromValue(record.enabledDataclasses());
  return object;
}

}  // namespace tallbook::tool
