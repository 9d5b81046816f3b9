// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <atomic>

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/PlugInClass.h"
#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "model/PlugInRegistry.h"
#include "platform/Platform.h"
#include "store/AccountsManagerState.h"
#include "store/ChangeDetection.h"
#include "store/Notifications.h"

namespace tallbook {
namespace {

std::atomic<bool> skipped{false};

const PlugInClass& notifierNamed(const String& name) {
  if (const PlugInClass* found = classNamed(name)) return *found;
  throw InternalConsistencyFailure("Could not find a class for class name " +
                                   std::string(shown(name)));
}

// Calls an optional class operation of every notifier of the record's type and the dataclass.
void tellNotifiers(const BasicAccount& account, const String& dataclass,
                   std::function<void(const String&, const String&)> PlugInClass::*operation) {
  for (const String& name :
       AccountsManager::_notifierClassNamesForAccountTypeDataclass(account.type(), dataclass)) {
    const PlugInClass& notifier = notifierNamed(name);
    if (notifier.*operation) (notifier.*operation)(account.identifier(), dataclass);
  }
}

ArrayRef& changesFor(AccountsManager::NotificationBatch& batch, const String& name) {
  const auto found =
      std::ranges::find(batch, name, &AccountsManager::NotificationBatch::value_type::first);
  if (found != batch.end()) return found->second;
  return batch.emplace_back(name, Array::make()).second;
}

Value currentElseOriginal(const DictionaryRef& current, const DictionaryRef& original,
                          const String& key) {
  if (const Value* value = current ? current->find(key) : nullptr) return *value;
  return original ? (*original)[key] : Value();
}

}  // namespace

bool Notifications::areSkipped() noexcept {
  return skipped;
}

void AccountsManager::_setShouldSkipNotifications(bool skip) noexcept {
  skipped = skip;
}

std::vector<String> AccountsManager::_notifierClassNamesForAccountTypeDataclass(
    const String& accountType, std::string_view dataclass) {
  const DictionaryRef creators = BasicAccount::_accountCreationMap();
  const ArrayRef entries = creators ? (*creators)[accountType].array() : nullptr;
  if (!entries) {
    throw InternalConsistencyFailure(
        "Malformed AccountCreators information. Could not find the information for the type " +
        std::string(shown(accountType)));
  }
  std::vector<String> names;
  for (const Value& element : *entries) {
    const DictionaryRef entry = element.dictionary();
    if (!entry || (*entry)["Type"].stringView() != "NotifierAccount") continue;
    const DictionaryRef description = (*entry)["Description"].dictionary();
    const ArrayRef supported =
        description ? (*description)[kAccountSupportedDataclasses].array() : nullptr;
    if (!supported || !supported->contains(dataclass)) continue;
    const String framework = (*description)["Framework"].string();
    if (!framework) {
      throw InternalConsistencyFailure(
          "Malformed AccountCreators information. Could not find the path to the framework for the "
          "notifier with type " +
          std::string(shown(accountType)));
    }
    loadAccountCreatorFramework(framework);
    const String className = (*description)["Class"].string();
    if (className.empty()) {
      throw InternalConsistencyFailure(
          "Malformed AccountCreators information. Could not find the name of the class for "
          "notificatinos with the type " +
          std::string(shown(accountType)));
    }
    names.push_back(className);
  }
  return names;
}

void AccountsManager::accountWillChangeForDataclass(const std::shared_ptr<BasicAccount>& account,
                                                    const String& dataclass) {
  if (account) tellNotifiers(*account, dataclass, &PlugInClass::accountWillChangeForDataclass);
}

void AccountsManager::accountDidChangeForDataclass(const std::shared_ptr<BasicAccount>& account,
                                                   const String& dataclass) {
  if (account) tellNotifiers(*account, dataclass, &PlugInClass::accountDidChangeForDataclass);
}

void AccountsManager::_addNotificationToDictionaryForChangeTypeOriginalPropertiesCurrentProperties(
    NotificationBatch& batch, std::int32_t changeType, const DictionaryRef& original,
    const DictionaryRef& current) {
  const std::vector<String> dataclasses =
      dataclassesConcernedByChange(static_cast<AccountChange>(changeType), original, current);
  if (dataclasses.empty()) return;
  const Value type = currentElseOriginal(current, original, kAccountType);
  std::vector<String> names;
  for (const String& dataclass : dataclasses) {
    for (const String& name :
         _notifierClassNamesForAccountTypeDataclass(type.string(), dataclass)) {
      if (std::ranges::find(names, name) == names.end()) names.push_back(name);
    }
  }
  const ArrayRef stored = original ? (*original)[kAccountEnabledDataclasses].array() : nullptr;
  // The records are the notifiers' to keep: no change of an account may reach them later.
  const ArrayRef originallyEnabled = stored ? stored->frozenCopy() : Array::makeFrozen({});
  for (const String& name : names) {
    changesFor(batch, name)
        ->append(Dictionary::make(
            {{kTBChangeAccountChangeTypeKey, changeType},
             {kTBChangeAccountIdentifierKey,
              currentElseOriginal(current, original, kAccountIdentifier)},
             {kTBChangeAccountTypeKey, type},
             {kTBChangeAccountOriginallyEnabledDataclassesKey, originallyEnabled}}));
  }
}

void AccountsManager::_sendNotificationsForChangedAccounts() {
  _state->sendNotificationsForChangedAccounts();
}

void AccountsManager::State::sendNotificationsForChangedAccounts() {
  struct Change {
    AccountChange kind;
    String identifier;
    DictionaryRef original;
    DictionaryRef current;
  };
  std::vector<Change> changes;
  const auto compare = [&](const String& identifier, const std::shared_ptr<BasicAccount>& account,
                           const DictionaryRef& original) {
    const DictionaryRef current = account->propertiesToSave();
    if (original->sharesStorageWith(*current)) return;
    changes.push_back({AccountChange::Kept, identifier, original, current});
  };
  if (topLevelAccountsByID.isFiledLike(originalAccountsByID)) {
    topLevelAccountsByID.forEachBeside(originalAccountsByID, compare);
  } else {
    originalAccountsByID.forEach([&](const String& identifier, const DictionaryRef& original) {
      if (!topLevelAccountsByID.contains(identifier)) {
        changes.push_back({AccountChange::Removed, identifier, original, nullptr});
      }
    });
    topLevelAccountsByID.forEach([&](const String& identifier, const auto& account) {
      if (const DictionaryRef* original = originalAccountsByID.find(identifier)) {
        compare(identifier, account, *original);
      } else {
        changes.push_back({AccountChange::Added, identifier, nullptr, account->propertiesToSave()});
      }
    });
  }
  // Removals, then additions, then kept accounts, each by identifier: the tables have no order.
  const auto group = [](AccountChange kind) {
    return kind == AccountChange::Removed ? 0 : kind == AccountChange::Added ? 1 : 2;
  };
  std::ranges::sort(changes, {}, [&](const Change& change) {
    return std::pair(group(change.kind), change.identifier.view());
  });
  NotificationBatch batch;
  for (const Change& change : changes) {
    _addNotificationToDictionaryForChangeTypeOriginalPropertiesCurrentProperties(
        batch, static_cast<std::int32_t>(change.kind), change.original, change.current);
  }
  for (const auto& [name, records] : batch) {
    const PlugInClass& notifier = notifierNamed(name);
    if (!notifier.noteAccountChanges) {
      throw InternalConsistencyFailure("The class " + name.str() +
                                       " does not offer noteAccountChanges:");
    }
    notifier.noteAccountChanges(records);
  }
}

String AccountsManager::displayNameForGroupOfAccountTypeForBeginningOfSentence(
    std::string_view accountType, bool forBeginning) {
  if (kSubscribedCalendarAccountType != accountType) return nullptr;
  return Platform::current().resourceBundle().localizedString(
      forBeginning ? "SUBSCRIBED_CALENDAR_GROUP_TITLE"
                   : "SUBSCRIBED_CALENDAR_GROUP_MID_SENTENCE_TITLE",
      "AccountsManager", "");
}

}  // namespace tallbook
