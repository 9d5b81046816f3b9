#include <iostream>

#include "tallbook/Vocabulary.h"

#include "tools/common/Dataclasses.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/Explanation.h"
#include "tools/tallbook/RecordSummary.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {

// The order is the one in which the library decides.
Explanation explanation(const BasicAccount& record, std::string_view dataclass) {
  const bool isOn = record.isEnabledForDataclass(dataclass);
  const std::string name = shortName(dataclass);
  if (const auto& parent = record.parentAccount()) {
    const ArrayRef decided = parent->enabledDataclasses();
    if (decided && !decided->empty()) {
      return {isOn, "parent",
              "its parent \"" + nameOf(*parent) + "\" decides, where " +
                  explanation(*parent, dataclass).text};
    }
  }
  if (!record.supportedDataclasses()->contains(dataclass)) {
    return {isOn, "unsupported",
            "the type \"" + record.type().str() + "\" does not carry " + name + ", only " +
                shortNames(record.supportedDataclasses())};
  }
  if (const auto feature = BasicAccount::restrictionOnDataclass(dataclass)) {
    return {
        isOn, "restricted",
        "device management does not allow " + std::string(*feature) + ", which withdraws " + name};
  }
  if (!record.provisionedDataclasses()->contains(dataclass)) {
    return {isOn, "unprovisioned",
            "the account is not provisioned for " + name + ", only for " +
                shortNames(record.provisionedDataclasses())};
  }
  if (isOn) return {isOn, "enabled", name + " is turned on"};
  const bool isNeverSet = !record.enabledDataclasses();
  return {
      isOn, "disabled",
      isNeverSet ? "nobody has turned anything on yet" : "the user has " + name + " turned off"};
}

ExitCode explain(const Options& options, const std::string& identifier,
                 const std::string& dataclass) {
  const ArrayRef named =
      dataclass.empty() ? nullptr : Array::make({Value(dataclassNamed(dataclass))});
  const auto store = storeToRead();
  const auto record = recordNamed(*store, identifier);
  JSON array = JSON::array();
  const ArrayRef asked = named ? named : record->supportedDataclasses();
  for (const Value& each : *asked) {
    const String full = each.string();
    const Explanation why = explanation(*record, full);
    if (options.json) {
      array.push_back({{"identifier", identifierOf(*record)},
                       {"dataclass", full.str()},
                       {"on", why.isOn},
                       {"reason", why.reason},
                       {"text", why.text}});
    } else {
      std::cout << shortName(full) << " is "
                << (why.isOn ? styled(Style::Added, "on") : styled(Style::Removed, "off")) << ": "
                << shown(why.text) << ".\n";
    }
  }
  if (options.json) printJSON(named ? array.front() : array);
  return ExitCode::Done;
}

}  // namespace tallbook::tool
