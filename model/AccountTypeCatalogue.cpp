// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "model/AccountTypeCatalogue.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "tallbook/BasicAccount.h"
#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Vocabulary.h"

#include "model/CanonicalDataclasses.h"
#include "model/DictionaryFile.h"
#include "platform/OncePerPlatform.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

constexpr std::string_view kResource = "AccountTypesProperties";

bool isProcessorForMultitasking() {
  const Value architecture =
      Platform::current().deviceInformation().answerForKey("CPUArchitecture");
  return architecture.stringView() != "armv6";
}

/// The list without what is no dataclass, or none on this device. A list of nothing else stays as
/// it is.
ArrayRef recognisedDataclasses(const ArrayRef& listed, bool hasNotes) {
  if (!listed) return nullptr;
  const auto isRecognised = [&](const Value& dataclass) {
    const auto name = dataclass.stringView();
    return name && canonicalPositionOf(*name) && (hasNotes || kAccountDataclassNotes != *name);
  };
  const auto count = static_cast<std::size_t>(std::ranges::count_if(*listed, isRecognised));
  if (count == 0 || count == listed->size()) return listed;
  std::vector<Value> recognised;
  recognised.reserve(count);
  std::ranges::copy_if(*listed, std::back_inserter(recognised), isRecognised);
  return Array::makeFrozen(std::move(recognised));
}

AccountTypeEntry entryFrom(const DictionaryRef& described, bool hasNotes) {
  AccountTypeEntry entry{described, nullptr, nullptr};
  entry.supportedDataclasses =
      recognisedDataclasses((*described)[kPropertiesSupportedDataclasses].array(), hasNotes);
  entry.orderedDataclasses = isInCanonicalOrder(entry.supportedDataclasses)
                                 ? entry.supportedDataclasses
                                 : Array::makeFrozen(inCanonicalOrder(entry.supportedDataclasses));
  return entry;
}

/// What the catalogue has under `key` for the type; null where it has no such type.
Value described(std::string_view type, std::string_view key) {
  const AccountTypeEntry* entry = AccountTypeCatalogue::shared().entryForType(type);
  return entry ? (*entry->described)[key] : Value();
}

OncePerPlatform<DictionaryRef> dataclassesProperties;

bool dataclassProperty(std::string_view dataclass, const String& key) {
  BasicAccount::initialize();
  const DictionaryRef& table =
      dataclassesProperties.get([] { return BasicAccount::_dataclassesProperties(); });
  const DictionaryRef entry = table ? (*table)[dataclass].dictionary() : nullptr;
  return entry && (*entry)[key].boolValue();
}

ArrayRef actionsForDataclass(const ArrayRef& actions, std::string_view dataclass) {
  return BasicAccount::multipleStoresSupportedByDataclass(dataclass)
             ? actions
             : BasicAccount::removeActionsIncompatibleWithSingleStoreDataclass(actions);
}

}  // namespace

const AccountTypeCatalogue& AccountTypeCatalogue::shared() {
  static OncePerPlatform<AccountTypeCatalogue> catalogue;
  return catalogue.get(read);
}

AccountTypeCatalogue AccountTypeCatalogue::read() {
  const auto path = Platform::current().resourceBundle().pathForResource(kResource, "plist");
  if (!path) throw InternalConsistencyFailure("Could not find AccountTypesProperties.plist");
  const DictionaryRef types = dictionaryFromFile(*path);
  if (!types) {
    throw InternalConsistencyFailure("Could not load the dataclasses configuration file");
  }
  const bool hasNotes = isProcessorForMultitasking();
  AccountTypeCatalogue catalogue;
  catalogue.add(types, hasNotes);
  for (DropIn& dropIn : dropInsOf(kResource)) {
    if (dropIn.content) dropIn.fault = catalogue.faultOf(dropIn.content);
    if (dropIn.fault.empty()) {
      catalogue.add(dropIn.content, hasNotes);
    } else {
      logLeftOut(dropIn.path, dropIn.fault);
      catalogue._leftOut.push_back(std::move(dropIn));
    }
  }
  return catalogue;
}

void AccountTypeCatalogue::add(const DictionaryRef& types, bool hasNotes) {
  _entries.reserve(_entries.size() + types->size());
  for (const auto& [type, described] : *types) {
    if (const DictionaryRef entry = described.dictionary()) {
      _entries.emplace_back(type, entryFrom(entry, hasNotes));
    }
  }
}

std::string AccountTypeCatalogue::faultOf(const DictionaryRef& types) const {
  for (const auto& [type, described] : *types) {
    const std::string name = "\"" + type.str() + "\"";
    if (type.empty()) return "it has a type without a name";
    if (entryForType(type)) return "the type " + name + " is there already";
    const DictionaryRef entry = described.dictionary();
    if (!entry) return "its " + name + " " + textOfWrongKind(described, "dictionary");
    const Value listed = entry[kPropertiesSupportedDataclasses];
    if (!listed.array()) {
      return "\"" + kPropertiesSupportedDataclasses.str() + "\" of its " + name + " " +
             textOfWrongKind(listed, "array");
    }
  }
  return {};
}

const AccountTypeEntry* AccountTypeCatalogue::entryForType(std::string_view type) const {
  for (const auto& [name, entry] : _entries) {
    if (name == type) return &entry;
  }
  return nullptr;
}

void BasicAccount::initialize() {
  AccountTypeCatalogue::shared();
}

bool BasicAccount::isMultitaskingEnabled() {
  initialize();
  return isProcessorForMultitasking();
}

std::vector<String> BasicAccount::allAccountTypes() {
  const auto& entries = AccountTypeCatalogue::shared().entries();
  std::vector<String> types;
  types.reserve(entries.size());
  for (const auto& [type, entry] : entries) types.push_back(type);
  return types;
}

bool BasicAccount::_isValidAccountType(std::string_view type) {
  const AccountTypeCatalogue& catalogue = AccountTypeCatalogue::shared();
  return !type.empty() && catalogue.entryForType(type);
}

ArrayRef BasicAccount::allSupportedDataclasses() {
  initialize();
  return canonicalDataclasses();
}

ArrayRef BasicAccount::supportedDataclassesForAccountType(std::string_view type) {
  const AccountTypeEntry* entry = AccountTypeCatalogue::shared().entryForType(type);
  return entry ? entry->supportedDataclasses : nullptr;
}

ArrayRef BasicAccount::userActionsToEnableDataclassForAccountType(std::string_view dataclass,
                                                                  std::string_view type) {
  return actionsForDataclass(described(type, kPropertiesEnableDataclassActions).array(), dataclass);
}

ArrayRef BasicAccount::userActionsToDisableDataclassForAccountType(std::string_view dataclass,
                                                                   std::string_view type) {
  return actionsForDataclass(described(type, kPropertiesDisableDataclassActions).array(),
                             dataclass);
}

ArrayRef BasicAccount::removeActionsIncompatibleWithSingleStoreDataclass(const ArrayRef& actions) {
  initialize();
  if (!actions) return nullptr;
  ArrayRef compatible = actions->mutableCopy();
  for (std::size_t index = compatible->size(); index-- > 0;) {
    if ((*compatible)[index].string() == kDataclassToggleActionKeepLocalData) {
      compatible->remove(index);
      break;
    }
  }
  return compatible;
}

ArrayRef BasicAccount::deleteAccountActionsForAccountType(std::string_view type) {
  return described(type, kPropertiesDeleteAccountActions).array();
}

bool BasicAccount::showRemindersSeparatelyForAccountType(std::string_view type) {
  return described(type, kPropertiesShowRemindersSeparately).boolValue();
}

bool BasicAccount::multipleStoresSupportedByDataclass(std::string_view dataclass) {
  return dataclassProperty(dataclass, kDataclassSupportsMultipleStores);
}

bool BasicAccount::displayToggleForDataclass(std::string_view dataclass) {
  return dataclassProperty(dataclass, kDataclassDisplaySwitch);
}

bool BasicAccount::userConfirmationIsRequiredByDataclass(std::string_view dataclass) {
  return dataclassProperty(dataclass, kDataclassRequiresUserConfirmation);
}

ArrayRef BasicAccount::accountClassesForAccountType(std::string_view type) {
  const DictionaryRef classes = dictionaryFromResource("AccountClasses");
  return classes ? (*classes)[type].array() : nullptr;
}

DictionaryRef BasicAccount::_dataclassesProperties() {
  initialize();
  return dictionaryFromResource("DataclassesProperties");
}

}  // namespace tallbook
