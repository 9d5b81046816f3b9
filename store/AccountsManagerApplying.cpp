// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <map>

#include "tallbook/AccountsManager.h"
#include "tallbook/RecordKeys.h"
#include "tallbook/Vocabulary.h"

namespace tallbook {
namespace {

std::string identifierIn(const Value& element) {
  const DictionaryRef record = element.dictionary();
  return record ? record[kAccountIdentifier].string().str() : std::string();
}

std::shared_ptr<BasicAccount> topLevelRecord(const AccountsManager& store,
                                             const std::string& identifier) {
  const auto record = identifier.empty() ? nullptr : store.accountWithIdentifier(identifier);
  return record && record->identifier() == std::string_view(identifier) ? record : nullptr;
}

/// Finds for each wanted account the file's record with its identifier, and brings that about.
class Application {
 public:
  Application(AccountsManager& store, const ArrayRef& present, const ArrayRef& wanted)
      : _store(store) {
    for (const Value& element : present) _present.emplace(identifierIn(element), element);
    for (const Value& element : wanted) ++_named[identifierIn(element)];
  }

  /// Why the account cannot be had; empty where the store has it now.
  std::string apply(const Value& element) {
    const std::string identifier = identifierIn(element);
    if (isThere(identifier, element)) return "";
    const DictionaryRef wanted = element.dictionary();
    if (!wanted) return "it is no dictionary";
    if (identifier.empty()) {
      return "it has no \"Identifier\", so that every time would add another; give it one, such as "
             "uuidgen prints";
    }
    if (_named[identifier] > 1) return "another one has its identifier " + identifier;
    if (const auto record = topLevelRecord(_store, identifier)) {
      return _store.applyToAccount(wanted, record);
    }
    if (_store.accountWithIdentifier(identifier)) {
      return "its identifier " + identifier + " is that of a child";
    }
    if (_present.contains(identifier)) {
      return "the file has a record with its identifier " + identifier + " that cannot be loaded";
    }
    std::string why = _store.whyNotInsertable(wanted);
    if (why.empty()) _store.insertAccount(BasicAccount::initWithProperties(wanted));
    return why;
  }

  /// How many of the others stay.
  std::size_t removeTheOthers() {
    AccountsManager::AccountList others;
    std::size_t staying = 0;
    for (const auto& [identifier, element] : _present) {
      if (!identifier.empty() && _named.contains(identifier)) continue;
      if (auto record = topLevelRecord(_store, identifier)) {
        others.push_back(std::move(record));
      } else {
        ++staying;
      }
    }
    _store.deleteAccounts(others);
    return staying;
  }

 private:
  /// Whether the file holds a record just as it is wanted; each stands for one of the list.
  bool isThere(const std::string& identifier, const Value& element) {
    const auto [first, last] = _present.equal_range(identifier);
    for (auto each = first; each != last; ++each) {
      if (each->second != element) continue;
      _present.erase(each);
      return true;
    }
    return false;
  }

  AccountsManager& _store;
  /// The file's records by their identifiers, without those that are just as they are wanted.
  std::multimap<std::string, Value> _present;
  std::map<std::string, std::size_t> _named;  ///< how often the list has an identifier
};

}  // namespace

AccountsManager::Applied AccountsManager::applyAccounts(const ArrayRef& wanted,
                                                        const AccountsFileContents& file,
                                                        bool prune) {
  Application application(*this, file.records(), wanted);
  for (std::size_t index = 0; index < wanted.size(); ++index) {
    const std::string why = application.apply(wanted[index]);
    if (!why.empty()) return {"Accounts[" + std::to_string(index) + "]: " + why, 0};
  }
  return {"", prune ? application.removeTheOthers() : 0};
}

std::string AccountsManager::applyToAccount(const DictionaryRef& wanted,
                                            const std::shared_ptr<BasicAccount>& account) {
  if (!account) return "there is no such account";
  const DictionaryRef present = account->properties()->frozenCopy();
  for (const String& key : {kAccountIdentifier, kAccountType}) {
    if ((*present)[key] != (*wanted)[key]) return whyKeyIsFixed(key);
  }
  std::string why =
      account->parentAccount() ? BasicAccount::whyNoRecord(wanted) : whyNotLoaded(wanted);
  if (!why.empty()) return why;
  for (const auto& [key, value] : *present) {
    if (!wanted->contains(key)) account->removeAccountPropertyForKey(key);
  }
  account->setAccountClass((*wanted)[kAccountClass].string());
  for (const auto& [key, value] : *wanted) {
    if ((*present)[key] != value) account->setAccountPropertyForKey(value, key);
  }
  takeUpChangesOfAccount(account);
  return "";
}

void AccountsManager::takeUpChangesOfAccount(const std::shared_ptr<BasicAccount>& account) {
  if (!account) return;
  const std::shared_ptr<BasicAccount> parent = account->parentAccount();
  if (!parent) {
    replaceAccountWithAccount(account, account);
    return;
  }
  const ArrayRef children =
      parent->accountPropertyForKey(kAccountChildAccounts).array()->mutableCopy();
  // One that the file has no identifier for is found by all that the file has of it.
  const DictionaryRef& stored = account->originalProperties();
  const bool isIdentified = !stored[kAccountIdentifier].string().empty();
  // Of two children with one identifier the later one is the record that look-ups give.
  for (std::size_t index = children->size(); index-- > 0;) {
    const DictionaryRef child = (*children)[index].dictionary();
    if (!child) continue;
    if (isIdentified ? child[kAccountIdentifier].string() == account->identifier()
                     : equalContent(child, stored)) {
      children->replace(index, account->properties());
      break;
    }
  }
  parent->setAccountPropertyForKey(children, kAccountChildAccounts);
  replaceAccountWithAccount(parent, parent);
}

std::string AccountsManager::whyNotLoaded(const DictionaryRef& properties) {
  const auto store = initWithAccounsInfoArray(Array::make({properties}));
  const auto& dropped = store->droppedRecords();
  return dropped.empty() ? "" : "the next load would drop it: " + dropped.front().why;
}

std::string AccountsManager::whyNotInsertable(const DictionaryRef& properties) const {
  const bool isOnDevice = properties[kAccountType].string() == kOnMyDeviceAccountType;
  if (isOnDevice && countOfBasicAccountsWithTypes({kOnMyDeviceAccountType}) > 0) {
    return "the device has its on-device account already, and only one";
  }
  return whyNotLoaded(properties);
}

}  // namespace tallbook
