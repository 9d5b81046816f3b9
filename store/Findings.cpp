// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Findings.h"

#include <map>
#include <set>

#include "tallbook/AccountCreators.h"
#include "tallbook/AccountsManager.h"
#include "tallbook/DataclassNames.h"
#include "tallbook/RecordKeys.h"
#include "tallbook/ScalarText.h"
#include "tallbook/Vocabulary.h"

namespace tallbook {
namespace {

using Kind = Value::Kind;

std::string quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

class FileCheck {
 public:
  std::vector<Finding> run(const Dictionary& content) {
    checkVersion(content[kPlistVersionKey]);
    for (const auto& [key, value] : content) {
      if (key == kPlistVersionKey || key == kPlistAccountsKey) continue;
      add("dropped", key.str(), "the next save keeps no top-level keys but Version and Accounts");
    }
    if (const ArrayRef records = content[kPlistAccountsKey].array()) {
      for (std::size_t index = 0; index < records->size(); ++index) {
        checkTopLevel("Accounts[" + std::to_string(index) + "]", (*records)[index]);
      }
    } else {
      add("ignored", kPlistAccountsKey.str(), "there is none, so the file holds no account");
    }
    return std::move(_findings);
  }

 private:
  void add(std::string_view effect, const std::string& place, const std::string& why) {
    _findings.push_back({effect, place, why});
  }

  void checkVersion(const Value& version) {
    const std::uint64_t current = AccountsManager::currentVersion();
    if (version.kind() != Kind::Integer) {
      add("ambiguous", kPlistVersionKey.str(),
          (version.isNull() ? "it is missing" : "it " + textOfWrongKind(version, "integer")) +
              ", and reads as " + std::to_string(version.unsignedValue()));
    } else if (version.unsignedValue() != current) {
      add("ambiguous", kPlistVersionKey.str(),
          "it is " + version.description() +
              (version.unsignedValue() < current ? ", older than " : ", newer than ") +
              std::to_string(current) + ", which the next save writes whatever the records are");
    }
  }

  static std::string placeOf(const std::string& place, const Dictionary& record) {
    const String type = record[kAccountType].string();
    const String identifier = record[kAccountIdentifier].string();
    if (type.empty() && identifier.empty()) return place;
    return place + " (" + shortened(type) + (type.empty() || identifier.empty() ? "" : " ") +
           shortened(identifier) + ")";
  }

  void checkTopLevel(const std::string& index, const Value& element) {
    const DictionaryRef record = element.dictionary();
    const std::string place = record ? placeOf(index, *record) : index;
    const auto store = AccountsManager::initWithAccounsInfoArray(Array::make({element}));
    if (!store->droppedRecords().empty()) {
      return add("dropped", place, store->droppedRecords().front().why);
    }
    const String className = (*record)[kAccountClass].string();
    const String loaded = store->allBasicAccounts()->front()->accountClass();
    if (!(loaded == className)) {
      add("repaired", place, "its class " + quoted(className) + " becomes " + quoted(loaded));
    }
    checkIdentifier(place, *record);
    if (!record->contains(kAccountIdentifier)) {
      add("repaired", place, "it has no identifier and receives a new one");
    }
    if ((*record)[kAccountType].string() == kOnMyDeviceAccountType) {
      if (!_onDevice.empty()) {
        add("ambiguous", place, "a device has one on-device account, which is " + _onDevice);
      } else {
        _onDevice = index;
      }
    }
    checkKeys(place, *record);
    checkChildren(place, index, *record);
  }

  void checkChildren(const std::string& place, const std::string& index, const Dictionary& parent) {
    const ArrayRef children = parent[kAccountChildAccounts].array();
    if (!children) return;
    for (std::size_t child = 0; child < children->size(); ++child) {
      const std::string childIndex = index + ".ChildAccounts[" + std::to_string(child) + "]";
      const Value& element = (*children)[child];
      const DictionaryRef record = element.dictionary();
      const std::string childPlace = record ? placeOf(childIndex, *record) : childIndex;
      const std::string fault = BasicAccount::whyNoRecord(element);
      if (!fault.empty()) {
        add("ignored", childPlace, record ? fault + "; it stays in " + place : fault);
        continue;
      }
      checkIdentifier(childPlace, *record);
      if (!record->contains(kAccountIdentifier)) {
        add("ambiguous", childPlace, "it has no identifier and receives another at every load");
      }
      checkKeys(childPlace, *record);
      if (record->contains(kAccountChildAccounts)) {
        add("ignored", childPlace, "a child has no children of its own that anyone finds");
      }
    }
  }

  void checkIdentifier(const std::string& place, const Dictionary& record) {
    const String identifier = record[kAccountIdentifier].string();
    if (!identifier) return;
    const auto [first, isNew] = _places.emplace(identifier.str(), place);
    if (isNew) return;
    add("ambiguous", place,
        "it has the identifier of " + first->second + ", and look-ups find only one of the two");
  }

  void checkKeys(const std::string& place, const Dictionary& record) {
    for (const auto& [key, kind] : kindsOfKeys()) {
      const Value& value = record[key];
      if (!value.isNull() && kind != Kind::Null && value.kind() != kind) {
        add("ignored", place, quoted(key) + " " + textOfWrongKind(value, nameOfKind(kind)));
      }
    }
    checkDataclasses(place, record, kAccountEnabledDataclasses);
    checkDataclasses(place, record, kAccountProvisionedDataclasses);
  }

  void checkDataclasses(const std::string& place, const Dictionary& record, const String& key) {
    const ArrayRef dataclasses = record[key].array();
    if (!dataclasses) return;
    const String type = record[kAccountType].string();
    const ArrayRef supported = BasicAccount::supportedDataclassesForAccountType(type);
    std::set<std::string> told;  // a list may hold one value many times
    const auto tellOnce = [&](const std::string& why) {
      if (told.insert(why).second) add("ignored", place, quoted(key) + " holds " + why);
    };
    for (const Value& dataclass : *dataclasses) {
      if (dataclass.kind() != Kind::String) {
        tellOnce(shortened(dataclass.description()) + ", no dataclass");
      } else if (!supported || !supported->contains(dataclass)) {
        tellOnce(shortNameOfDataclass(*dataclass.stringView()) + ", which the type does not carry");
      }
    }
  }

  std::vector<Finding> _findings;
  std::map<std::string, std::string> _places;  ///< of the records, by their identifiers
  std::string _onDevice;
};

}  // namespace

std::vector<Finding> findingsInAccountsFile(const Dictionary& topLevel) {
  return FileCheck().run(topLevel);
}

std::vector<Finding> findingsInCreators() {
  std::vector<Finding> findings;
  for (const AccountCreator& creator : accountCreators()) {
    if (!creator.fault.empty()) findings.push_back({"broken", creator.place, creator.fault});
  }
  return findings;
}

}  // namespace tallbook
