#include "tools/common/Dataclasses.h"

#include "tallbook/BasicAccount.h"

#include "tools/common/Nearest.h"
#include "tools/common/Outcome.h"

namespace tallbook::tool {
namespace {

constexpr std::string_view kPrefix = "com.orvane.Dataclass.";

}  // namespace

std::string shortName(std::string_view dataclass) {
  if (dataclass.starts_with(kPrefix)) dataclass.remove_prefix(kPrefix.size());
  return std::string(dataclass);
}

std::string shortNames(const ArrayRef& dataclasses) {
  if (!dataclasses) return "not set";
  std::string names;
  for (const Value& dataclass : *dataclasses) {
    if (!names.empty()) names += ", ";
    names += shortName(dataclass.stringView().value_or(""));
  }
  return names.empty() ? "none" : names;
}

String dataclassNamed(std::string_view name) {
  const ArrayRef all = BasicAccount::allSupportedDataclasses();
  for (const Value& dataclass : *all) {
    const String full = dataclass.string();
    if (full == name || isSameWord(shortName(full), name)) return full;
  }
  throw Failure(ExitCode::Usage, "there is no dataclass \"" + std::string(name) +
                                     "\"; there are: " + shortNames(all));
}

}  // namespace tallbook::tool
