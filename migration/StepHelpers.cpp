// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "migration/StepHelpers.h"

#include <algorithm>

#include "tallbook/Vocabulary.h"

namespace tallbook {

std::string nameOf(const BasicAccount& account) {
  for (const String& key : {kAccountDisplayName, kAccountUsername, kAccountIdentifier}) {
    const String name = account.accountPropertyForKey(key).string();
    if (!name.empty()) return name.str();
  }
  return "an account without a name";
}

bool hasClassAmong(const BasicAccount& account, std::initializer_list<std::string_view> classes) {
  const String name = account.accountClass();
  return std::ranges::find(classes, name.view()) != classes.end();
}

bool isActive(const BasicAccount& account, bool absent) {
  const Value active = account.accountPropertyForKey("IsActive");
  return active.isNumber() ? active.boolValue() : absent;
}

bool isHostedMailAccount(const BasicAccount& account) {
  return hasClassAmong(account, {"VeltroAccount", "PendrelAccount"});
}

bool hasChildWhich(const BasicAccount& account,
                   const std::function<bool(const Dictionary& child)>& isWanted) {
  const ArrayRef children = account.accountPropertyForKey(kAccountChildAccounts).array();
  return children && std::ranges::any_of(*children, [&](const Value& element) {
           const DictionaryRef child = element.dictionary();
           return child && isWanted(*child);
         });
}

bool holds(const ArrayRef& dataclasses, const String& dataclass) {
  return dataclasses && dataclasses->contains(dataclass.view());
}

}  // namespace tallbook
