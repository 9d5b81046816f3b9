// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>
#include <utility>

#include "tallbook/BasicAccount.h"
#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/PlugInClass.h"

#include "model/BasicAccountLinks.h"
#include "model/CreatorsInformation.h"
#include "model/LibraryLogging.h"
#include "model/PlugInRegistry.h"
#include "platform/OncePerPlatform.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

constexpr std::string_view kFullAccountRole = "FullAccount";
constexpr std::string_view kSyncAccountRole = "SyncAccount";

/// What a plain record, which has no credentials of its own, reports to the handler of a renewal.
constexpr int kNoCredentialsToRenew = 3;

[[noreturn]] void malformed(std::string_view what, std::string_view role, const String& type) {
  std::string text = "Malformed AccountCreators information. Could not find ";
  text.append(what).append(" ").append(role).append(" with type ").append(shown(type));
  throw InternalConsistencyFailure(text);
}

std::string classAndIdentifier(const String& className, const String& identifier) {
  return "Could not create the account with class " + std::string(shown(className)) + " and id " +
         std::string(shown(identifier));
}

std::string classNotLoaded(const String& className) {
  return "The framework/bundle where " + std::string(shown(className)) +
         " is defined has not been loaded";
}

/// Null when the creator offers nothing, or its operation makes nothing.
std::shared_ptr<BasicAccount> makeFullAccount(const PlugInClass& creator,
                                              const std::shared_ptr<BasicAccount>& record) {
  if (creator.classForAccountType) {
    const String className = creator.classForAccountType(record->type());
    const PlugInClass* fullClass = classNamed(className);
    return fullClass && fullClass->initWithProperties
               ? fullClass->initWithProperties(record->properties())
               : nullptr;
  }
  return creator.accountWithBasicAccount ? creator.accountWithBasicAccount(record) : nullptr;
}

}  // namespace

DictionaryRef BasicAccount::_creatorsInfo() {
  initialize();
  return CreatorsInformation::read().merged();
}

DictionaryRef BasicAccount::_accountCreationMap() {
  initialize();
  struct NothingToKeep {};
  static OncePerPlatform<DictionaryRef> map;
  try {
    return map.get([] {
      DictionaryRef creators = _creatorsInfo();
      if (!creators) throw NothingToKeep();
      return creators;
    });
  } catch (const NothingToKeep&) {
    return nullptr;
  }
}

String BasicAccount::_creatorClassNameForAccountTypeCreatorTypeLoader(const String& accountType,
                                                                      std::string_view creatorType,
                                                                      AccountLoader* loader) const {
  const DictionaryRef creators = _accountCreationMap();
  const ArrayRef entries = creators ? (*creators)[accountType].array() : nullptr;
  if (!entries) {
    throw InternalConsistencyFailure(
        "Malformed AccountCreators information. Could not find the information for the type " +
        std::string(shown(accountType)));
  }
  String answer;
  for (const Value& element : *entries) {
    const DictionaryRef entry = element.dictionary();
    if (!entry || (*entry)["Type"].stringView() != creatorType) continue;
    const DictionaryRef description = (*entry)["Description"].dictionary();
    if (!description) malformed("the description for the", creatorType, accountType);

    const bool isLoaded = loader && creatorType == kFullAccountRole &&
                          loader->loadBundleForAccountWithProperties(_properties);
    if (!isLoaded) {
      const auto framework = (*description)["Framework"].stringView();
      if (!framework) malformed("the path to the framework for the", creatorType, accountType);
      loadAccountCreatorFramework(*framework);
    }
    String className = (*description)["Class"].string();
    if (className.empty()) {
      throw InternalConsistencyFailure(
          "Malformed AccountCreators information. Could not find the name of the class that "
          "creates " +
          std::string(creatorType) + " with the type " + std::string(shown(accountType)));
    }
    answer = std::move(className);
  }
  return answer;
}

String BasicAccount::fullAccountCreatorClassNameForAccountTypeLoader(const String& accountType,
                                                                     AccountLoader* loader) const {
  return _creatorClassNameForAccountTypeCreatorTypeLoader(accountType, kFullAccountRole, loader);
}

String BasicAccount::syncAccountCreatorClassNameForAccountType(const String& accountType) const {
  return _creatorClassNameForAccountTypeCreatorTypeLoader(accountType, kSyncAccountRole, nullptr);
}

std::shared_ptr<BasicAccount> BasicAccount::fullAccountUsingLoader(AccountLoader* loader) {
  if (_links && _links->fullAccount) return _links->fullAccount;
  const String className = fullAccountCreatorClassNameForAccountTypeLoader(type(), loader);
  const PlugInClass* creator = classNamed(className);
  if (!creator) throw InternalConsistencyFailure(classNotLoaded(className));
  const auto full = makeFullAccount(*creator, shared_from_this());
  if (!full) throw InternalConsistencyFailure(classAndIdentifier(className, identifier()));
  full->setParentAccount(parentAccount());
  setFullAccount(full);
  return full;
}

void BasicAccount::setFullAccount(std::shared_ptr<BasicAccount> fullAccount) {
  if (fullAccount || _links) links().fullAccount = std::move(fullAccount);
}

std::shared_ptr<AccountRefreshProtocol> BasicAccount::_cachedSyncAccount() {
  constexpr std::string_view operation = "-[BasicAccount(Internal) _cachedSyncAccount]";
  if (_links && _links->syncAccount) return _links->syncAccount;
  const String className = syncAccountCreatorClassNameForAccountType(type());
  if (!className) return nullptr;
  const PlugInClass* creator = classNamed(className);
  if (!creator) {
    logMessage(operation, [&] {
      return "ERROR: " + classNotLoaded(className) +
             ", so there is no syncable account for basic account with properties " +
             Value(_properties).description();
    });
    return nullptr;
  }
  if (creator->accountToRefreshForBasicAccount) {
    if (auto made = creator->accountToRefreshForBasicAccount(shared_from_this())) {
      return links().syncAccount = std::move(made);
    }
  }
  logMessage(operation, [&] { return "ERROR: " + classAndIdentifier(className, identifier()); });
  return nullptr;
}

bool BasicAccount::refreshContainerWithIdentifierForDataclassIsUserRequested(
    const String& identifier, const String& dataclass, bool isUserRequested) {
  const auto sync = _cachedSyncAccount();
  return sync && sync->refreshContainerWithIdentifierForDataclassIsUserRequested(
                     identifier, dataclass, isUserRequested);
}

bool BasicAccount::refreshContainerListForDataclassIsUserRequested(const String& dataclass,
                                                                   bool isUserRequested) {
  const auto sync = _cachedSyncAccount();
  return sync && sync->refreshContainerListForDataclassIsUserRequested(dataclass, isUserRequested);
}

bool BasicAccount::refreshContainersForDataclassIsUserRequested(const String& dataclass,
                                                                bool isUserRequested) {
  const auto sync = _cachedSyncAccount();
  return sync && sync->refreshContainersForDataclassIsUserRequested(dataclass, isUserRequested);
}

bool BasicAccount::refreshContainerWithIdentifierForDataclass(const String& identifier,
                                                              const String& dataclass) {
  return refreshContainerWithIdentifierForDataclassIsUserRequested(identifier, dataclass, false);
}

bool BasicAccount::refreshContainerListForDataclass(const String& dataclass) {
  return refreshContainerListForDataclassIsUserRequested(dataclass, false);
}

bool BasicAccount::refreshContainersForDataclass(const String& dataclass) {
  return refreshContainersForDataclassIsUserRequested(dataclass, false);
}

void BasicAccount::renewAccountCredentialsWithHandler(const RenewalHandler& handler) {
  if (handler) handler(kNoCredentialsToRenew);
}

}  // namespace tallbook
