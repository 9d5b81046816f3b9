// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

#include "tallbook/BasicAccount.h"
#include "tallbook/DataclassNames.h"
#include "tallbook/Vocabulary.h"

#include "model/AccountTypeCatalogue.h"
#include "model/CanonicalDataclasses.h"
#include "platform/Platform.h"
#include "platform/propertylist/KeyedHash.h"

namespace tallbook {
namespace {

/// A feature that device management may forbid, and what is withdrawn with it.
struct Restriction {
  ManagementRestrictions::Feature feature;
  std::array<const String*, 2> dataclasses;  ///< the second is null where there is one
  std::string_view inWords;
};

using Feature = ManagementRestrictions::Feature;

// Pointers, because the constants have no value yet while this table is initialised.
constexpr std::array<Restriction, 5> kRestrictions{{
    {Feature::CloudDocumentSync,
     {&kAccountDataclassUbiquity, &kAccountDataclassKeyValue},
     "syncing documents with the cloud"},
    {Feature::PhotoStream, {&kAccountDataclassMediaStream, nullptr}, "the photo stream"},
    {Feature::SharedPhotoStreams,
     {&kAccountDataclassSharedStreams, nullptr},
     "shared photo streams"},
    {Feature::CloudBackup, {&kAccountDataclassBackup, nullptr}, "backing up to the cloud"},
    {Feature::PassesWhileLocked,
     {&kAccountDataclassPouchet, nullptr},
     "showing cards and passes while the device is locked"},
}};

/// The list with each string once.
std::vector<Value> withoutRepetitions(const Array& list) {
  constexpr std::size_t kFew = 32;  // there are fewer dataclasses
  std::vector<Value> members;
  members.reserve(list.size() + 1);
  std::unordered_set<std::string_view, KeyedStringHash> seen;
  const auto isNew = [&](const Value& element, std::string_view text) {
    if (list.size() > kFew) return seen.insert(text).second;
    return std::find(members.begin(), members.end(), element) == members.end();
  };
  for (const Value& element : list) {
    const auto text = element.stringView();
    if (!text || isNew(element, *text)) members.push_back(element);
  }
  return members;
}

/// What the parent has enabled and its children with it; null where they choose for themselves.
ArrayRef enabledByParent(const std::shared_ptr<BasicAccount>& parent) {
  if (!parent) return nullptr;
  ArrayRef enabled = parent->enabledDataclasses();
  return enabled && !enabled->empty() ? enabled : nullptr;
}

/// The nearest list, the record's own or an ancestor's; null when nobody has one.
ArrayRef arrayForKey(const BasicAccount& account, std::string_view key) {
  for (const BasicAccount* record = &account; record; record = record->parentAccount().get()) {
    if (ArrayRef list = (*record->properties())[key].array()) return list;
  }
  return nullptr;
}

}  // namespace

ArrayRef BasicAccount::supportedDataclasses() const {
  const String ownType = type();
  const AccountTypeEntry* entry = AccountTypeCatalogue::shared().entryForType(ownType);
  return entry ? entry->orderedDataclasses : Array::make();
}

ArrayRef BasicAccount::provisionedDataclasses() const {
  const ArrayRef supported = supportedDataclasses();
  const ArrayRef stored = arrayForKey(*this, kAccountProvisionedDataclasses);
  const std::vector<String> restricted = _profileRestrictedDataclasses();
  std::vector<Value> provisioned = withoutRepetitions(*supported);
  std::erase_if(provisioned, [&](const Value& dataclass) {
    return (stored && !stored->contains(dataclass)) ||
           std::ranges::find(restricted, dataclass.string()) != restricted.end();
  });
  return Array::make(std::move(provisioned));
}

ArrayRef BasicAccount::enabledDataclasses() const {
  if (ArrayRef inherited = enabledByParent(parentAccount())) return inherited;
  const ArrayRef stored = arrayForKey(*this, kAccountEnabledDataclasses);
  if (!stored) return nullptr;
  const ArrayRef provisioned = provisionedDataclasses();
  std::vector<Value> enabled;
  for (const Value& dataclass : *provisioned) {
    if (stored->contains(dataclass)) enabled.push_back(dataclass);
  }
  return Array::make(std::move(enabled));
}

// As `enabledDataclasses` would answer. One dataclass is withdrawn by one feature at most, so that
// the other ones need not be asked about: a migration puts this question for every account.
bool BasicAccount::isEnabledForDataclass(std::string_view dataclass) const {
  if (const ArrayRef inherited = enabledByParent(parentAccount()))
    return inherited->contains(dataclass);
  const ArrayRef stored = arrayForKey(*this, kAccountEnabledDataclasses);
  if (!stored || !stored->contains(dataclass)) return false;
  const ArrayRef provisioned = arrayForKey(*this, kAccountProvisionedDataclasses);
  return (!provisioned || provisioned->contains(dataclass)) &&
         supportedDataclasses()->contains(dataclass) && !restrictionOnDataclass(dataclass);
}

// The order is the one in which `isEnabledForDataclass` decides.
DataclassExplanation BasicAccount::explanationForDataclass(std::string_view dataclass) const {
  const bool isOn = isEnabledForDataclass(dataclass);
  const std::string name = shortNameOfDataclass(dataclass);
  if (enabledByParent(parentAccount())) {
    return {isOn, "parent",
            "its parent \"" + parentAccount()->nameForPeople() + "\" decides, where " +
                parentAccount()->explanationForDataclass(dataclass).text};
  }
  if (!supportedDataclasses()->contains(dataclass)) {
    return {isOn, "unsupported",
            "the type \"" + type().str() + "\" does not carry " + name + ", only " +
                shortNamesOfDataclasses(supportedDataclasses())};
  }
  if (const auto feature = restrictionOnDataclass(dataclass)) {
    return {
        isOn, "restricted",
        "device management does not allow " + std::string(*feature) + ", which withdraws " + name};
  }
  if (!provisionedDataclasses()->contains(dataclass)) {
    return {isOn, "unprovisioned",
            "the account is not provisioned for " + name + ", only for " +
                shortNamesOfDataclasses(provisionedDataclasses())};
  }
  if (isOn) return {isOn, "enabled", name + " is turned on"};
  return {isOn, "disabled",
          enabledDataclasses() ? "the user has " + name + " turned off"
                               : "nobody has turned anything on yet"};
}

void BasicAccount::setEnabledForDataclass(bool enabled, const String& dataclass) {
  if (supportedDataclasses()->contains(Value(dataclass)))
    _forcedSetEnabledForDataclass(enabled, dataclass);
}

void BasicAccount::_forcedSetEnabledForDataclass(bool enabled, const String& dataclass) {
  if (!dataclass) return;
  const ArrayRef stored = (*_properties)[kAccountEnabledDataclasses].array();
  std::vector<Value> members = stored ? withoutRepetitions(*stored) : std::vector<Value>();
  const auto found = std::find(members.begin(), members.end(), Value(dataclass));
  const bool isAsWanted = enabled == (found != members.end());
  if (isAsWanted && stored && members.size() == stored->size()) return;
  if (enabled && found == members.end()) {
    members.emplace_back(dataclass);
  } else if (!enabled && found != members.end()) {
    members.erase(found);
  }
  // Frozen, so that the record and its snapshots go on sharing what they hold.
  setAccountPropertyForKey(Array::make(std::move(members))->frozenCopy(),
                           kAccountEnabledDataclasses);
}

void BasicAccount::setEnabledForDataclasses(const ArrayRef& dataclasses) {
  removeAccountPropertyForKey(kAccountEnabledDataclasses);
  if (!dataclasses) return;
  for (const Value& dataclass : *dataclasses) setEnabledForDataclass(true, dataclass.string());
}

ArrayRef BasicAccount::_orderedDataclasses(const ArrayRef& dataclasses) {
  initialize();
  return Array::make(inCanonicalOrder(dataclasses));
}

std::vector<String> BasicAccount::_profileRestrictedDataclasses() {
  initialize();
  std::vector<Feature> features;
  features.reserve(kRestrictions.size());
  for (const Restriction& restriction : kRestrictions) features.push_back(restriction.feature);
  const std::vector<int> answers =
      Platform::current().restrictions().restrictionsOfFeatures(features);
  std::vector<String> restricted;
  for (std::size_t index = 0; index < features.size(); ++index) {
    if (answers[index] != ManagementRestrictions::kExplicitlyNotAllowed) continue;
    for (const String* dataclass : kRestrictions[index].dataclasses) {
      if (dataclass) restricted.push_back(*dataclass);
    }
  }
  return restricted;
}

std::optional<std::string_view> BasicAccount::restrictionOnDataclass(std::string_view dataclass) {
  initialize();
  for (const Restriction& restriction : kRestrictions) {
    const auto& withdrawn = restriction.dataclasses;
    const bool concerned = std::any_of(withdrawn.begin(), withdrawn.end(), [&](const String* each) {
      return each && *each == dataclass;
    });
    if (concerned && Platform::current().restrictions().restrictionOfFeature(restriction.feature) ==
                         ManagementRestrictions::kExplicitlyNotAllowed) {
      return restriction.inWords;
    }
  }
  return std::nullopt;
}

}  // namespace tallbook
