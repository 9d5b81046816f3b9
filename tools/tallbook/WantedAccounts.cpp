#include "tools/tallbook/WantedAccounts.h"

#include <map>

#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook/FileDifferences.h"
#include "tools/tallbook/RecordKeys.h"

namespace tallbook::tool {
namespace {

std::string identifierIn(const Value& element) {
  const DictionaryRef record = element.dictionary();
  return record ? (*record)[kAccountIdentifier].string().str() : std::string();
}

std::shared_ptr<BasicAccount> topLevelRecord(const EditableStore& store,
                                             const std::string& identifier) {
  const auto record = identifier.empty() ? nullptr : store->accountWithIdentifier(identifier);
  return record && record->identifier() == std::string_view(identifier) ? record : nullptr;
}

void addAccount(const EditableStore& store, const DictionaryRef& wanted) {
  requireLoadable(wanted);
  requireRoomFor((*wanted)[kAccountType].string(), *store);
  store->insertAccount(BasicAccount::initWithProperties(wanted));
}

/// Finds for each wanted account the file's record with its identifier, and brings that about.
class Taking {
 public:
  Taking(const EditableStore& store, const ArrayRef& wanted) : _store(store) {
    for (const Value& element : store.file().records()) {
      _present.emplace(identifierIn(element), element);
    }
    for (const Value& element : wanted) ++_named[identifierIn(element)];
  }

  void take(const Value& element) {
    const std::string identifier = identifierIn(element);
    if (isThere(identifier, element)) return;
    const DictionaryRef wanted = element.dictionary();
    if (!wanted) throw Failure(ExitCode::Usage, "it is no dictionary");
    if (identifier.empty()) {
      throw Failure(ExitCode::Usage,
                    "it has no \"Identifier\", so that every time would add another; give it one, "
                    "such as uuidgen prints");
    }
    if (_named[identifier] > 1) {
      throw Failure(ExitCode::Usage, "another one has its identifier " + identifier);
    }
    if (const auto record = topLevelRecord(_store, identifier)) {
      takeRecord(_store, record, wanted);
    } else if (_store->accountWithIdentifier(identifier)) {
      throw Failure(ExitCode::Usage, "its identifier " + identifier + " is that of a child");
    } else if (_present.contains(identifier)) {
      throw Failure(ExitCode::Usage, "the file has a record with its identifier " + identifier +
                                         " that cannot be loaded; see \"tallbook check\"");
    } else {
      addAccount(_store, wanted);
    }
  }

  void removeTheOthers() {
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
    _store->deleteAccounts(others);
    if (staying == 0) return;
    note("records that have no identifier or cannot be loaded stay: " + std::to_string(staying));
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

  const EditableStore& _store;
  /// The file's records by their identifiers, without those that are just as they are wanted.
  std::multimap<std::string, Value> _present;
  std::map<std::string, std::size_t> _named;  ///< how often the list has an identifier
};

}  // namespace

void takeRecord(const EditableStore& store, const std::shared_ptr<BasicAccount>& record,
                const DictionaryRef& wanted) {
  const DictionaryRef present = record->properties()->frozenCopy();
  for (const String& key : {kAccountIdentifier, kAccountType}) {
    if ((*present)[key] != (*wanted)[key]) requireChangeable(key.str());
  }
  if (const std::string fault = BasicAccount::whyNoRecord(wanted); !fault.empty()) {
    throw Failure(ExitCode::Usage, fault);
  }
  if (!record->parentAccount()) requireLoadable(wanted);
  for (const auto& [key, value] : *present) {
    if (!wanted->contains(key)) record->removeAccountPropertyForKey(key);
  }
  record->setAccountClass((*wanted)[kAccountClass].string());
  for (const auto& [key, value] : *wanted) {
    if ((*present)[key] != value) record->setAccountPropertyForKey(value, key);
  }
  store.take(record);
}

void takeAccounts(const EditableStore& store, const ArrayRef& wanted, bool prune) {
  if (!wanted) {
    throw Failure(ExitCode::Unreadable,
                  "the text has no \"Accounts\"; give an empty array where none is wanted");
  }
  Taking taking(store, wanted);
  for (std::size_t index = 0; index < wanted.size(); ++index) {
    try {
      taking.take(wanted[index]);
    } catch (const Failure& failure) {
      throw Failure(failure.code(), "Accounts[" + std::to_string(index) + "]: " + failure.what());
    }
  }
  if (prune) taking.removeTheOthers();
}

DictionaryRef accountsOf(const EditableStore& store) {
  const ArrayRef records = Array::make();
  for (const auto& record : *store->allBasicAccounts()) records->append(record->properties());
  return Dictionary::make({{kPlistAccountsKey, records}})->frozenCopy();
}

void showAndSave(const Options& options, const EditableStore& store, const DictionaryRef& before) {
  const DictionaryRef after = accountsOf(store);
  const auto changes = differencesBetween(*before, *after);
  if (options.json) {
    printJSON(jsonFromDifferences(changes));
  } else {
    printDifferences(changes);
  }
  if (!changes.empty()) store.save(AccountsManager::KeepGeneration::Always);
}

}  // namespace tallbook::tool
