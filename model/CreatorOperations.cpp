// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>

#include "tallbook/AccountCreators.h"
#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/PlugInClass.h"

#include "model/PlugInRegistry.h"

namespace tallbook {
namespace {

/// A class that makes full accounts by naming another class has to name one that makes them.
std::string faultOfFullAccounts(const PlugInClass& creator, const String& type) {
  if (!creator.classForAccountType) {
    if (creator.accountWithBasicAccount) return {};
    return "it offers neither classForAccountType nor accountWithBasicAccount";
  }
  const String name = creator.classForAccountType(type);
  const PlugInClass* const made = classNamed(name);
  if (made && made->initWithProperties) return {};
  return "its classForAccountType answers \"" + name.str() + "\" for \"" + type.str() +
         (made ? "\", which offers no initWithProperties" : "\", which is no class");
}

std::string listed(const std::vector<std::string_view>& names) {
  std::string text;
  for (const std::string_view name : names) text.append(text.empty() ? "" : ", ").append(name);
  return text.empty() ? "nothing" : text;
}

CreatorOperations operationsOf(const PlugInClass& made, const AccountCreator& creator) {
  CreatorOperations operations;
  const auto look = [&](std::string_view name, bool isOffered) {
    (isOffered ? operations.offered : operations.lacking).push_back(name);
    return isOffered;
  };
  if (creator.role == "FullAccount") {
    look("classForAccountType", !!made.classForAccountType);
    look("accountWithBasicAccount", !!made.accountWithBasicAccount);
    operations.fault = faultOfFullAccounts(made, creator.accountType);
  } else if (creator.role == "SyncAccount") {
    if (!look("accountToRefreshForBasicAccount", !!made.accountToRefreshForBasicAccount)) {
      operations.fault = "it makes no sync accounts";
    }
  } else {
    look("accountWillChangeForDataclass", !!made.accountWillChangeForDataclass);
    look("accountDidChangeForDataclass", !!made.accountDidChangeForDataclass);
    if (!look("noteAccountChanges", !!made.noteAccountChanges)) {
      operations.fault = "a save that concerns it fails to tell the notifiers";
    }
  }
  return operations;
}

}  // namespace

std::string CreatorOperations::text() const {
  if (offered.empty() && lacking.empty()) return fault;
  return fault + (fault.empty() ? "offers " : "; offers ") + listed(offered) + " and lacks " +
         listed(lacking);
}

CreatorOperations operationsOfCreator(const AccountCreator& creator) {
  try {
    if (!creator.framework.empty()) loadAccountCreatorFramework(creator.framework);
  } catch (const InternalConsistencyFailure& failure) {
    return {{}, {}, failure.what()};
  }
  if (const PlugInClass* const made = classNamed(creator.className)) {
    return operationsOf(*made, creator);
  }
  return {{}, {}, "the module has no class \"" + creator.className + "\""};
}

}  // namespace tallbook
