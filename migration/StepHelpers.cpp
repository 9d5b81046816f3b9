#include "migration/StepHelpers.h"

#include <algorithm>

namespace tallbook {

bool hasClassAmong(const BasicAccount& account, std::initializer_list<std::string_view> classes) {
  return std::ranges::find(classes, account.accountClass().view()) != classes.end();
}

bool isActive(const BasicAccount& account, bool absent) {
  const Value active = account.accountPropertyForKey("IsActive");
  return active.isNumber() ? active.boolValue() : absent;
}

bool isHostedMailAccount(const BasicAccount& account) {
  return hasClassAmong(account, {"VeltroAccount", "PendrelAccount"});
}

bool holds(const ArrayRef& dataclasses, const String& dataclass) {
  return dataclasses && dataclasses->contains(dataclass.view());
}

}  // namespace tallbook
