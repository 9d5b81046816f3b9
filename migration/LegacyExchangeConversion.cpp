// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <array>
#include <string>

#include "tallbook/Vocabulary.h"

#include "migration/AccountsDataMigrator.h"
#include "migration/LegacyFile.h"

namespace tallbook {
namespace {

const std::array<Renaming, 3>& renamings() {
  static const std::array<Renaming, 3> table = {
      {{"SyncoraAccountConfigurationClass", kAccountClass},
       {"SyncoraAccountDescription", kAccountDisplayName},
       {"SyncoraAccountConfigurationAccountID", kAccountIdentifier}}};
  return table;
}

struct EnableSwitch {
  std::string_view key;
  const String& dataclass;
};

const std::array<EnableSwitch, 4>& enableSwitches() {
  static const std::array<EnableSwitch, 4> switches = {
      {{"SyncoraAccountEnabledForCalendar", kAccountDataclassCalendars},
       {"SyncoraAccountEnabledForContacts", kAccountDataclassContacts},
       {"SyncoraAccountEnabledForEmail", kAccountDataclassMail},
       {"SyncoraAccountEnabledForContactsSearch", kAccountDataclassContactsSearch}}};
  return switches;
}

// Takes the switches out of the properties: the dataclasses that none of them turns off. A switch
// of the wrong kind counts as absent, which leaves its dataclass on.
ArrayRef takeEnabledDataclasses(Dictionary& properties) {
  const ArrayRef enabled = Array::make();
  for (const auto& [key, dataclass] : enableSwitches()) {
    const Value& setting = properties[key];
    if (!setting.isNumber() || setting.boolValue()) enabled->append(dataclass);
    properties.remove(key);
  }
  return enabled->frozenCopy();
}

// The properties of the record that a description becomes; null for null.
DictionaryRef propertiesOf(const DictionaryRef& description) {
  const DictionaryRef properties = renamed(description, renamings());
  if (!properties) return nullptr;
  properties->set(kAccountEnabledDataclasses, takeEnabledDataclasses(*properties));
  properties->set(kAccountType, kExchangeAccountType);
  properties->set(kAccountTypeString, "Exchange");
  properties->set(kAccountShortTypeString, "Exchange");
  return properties;
}

}  // namespace

bool AccountsDataMigrator::_migrateSyncoraAccounts(const Store& store) {
  constexpr std::string_view kAccounts = "SyncoraAccountsKey";
  LegacyFile file(syncoraAccountPath());
  if (file.hasEntries()) _foundOldSyncoraAccountsToMigrate = true;
  collate("OldExchangeAccount", file.contents());

  auto accounts = file.accountsMadeOf(
      kAccounts,
      [this](const DictionaryRef& each) { return _convertExchangeAccountDescription(each); },
      "-[AccountsDataMigrator(Internal) _migrateSyncoraAccounts:]. Could not convert the "
      "description for the Exchange account ");
  const bool isConverted = accounts.has_value();
  if (isConverted) {
    replaceAccounts(store, {kExchangeAccountType}, *accounts,
                    "replaced by the accounts of the legacy Exchange file",
                    "an account of the legacy Exchange file has its identifier");
  } else {
    tellNotConverted(file, kAccounts, propertiesOf);
  }
  _oldSyncoraFile = file.end(std::move(accounts));
  file.removeOriginal();
  endStage("legacy Exchange file", store);
  return isConverted;
}

AccountsDataMigrator::Account AccountsDataMigrator::_convertExchangeAccountDescription(
    const DictionaryRef& description) {
  const DictionaryRef properties = propertiesOf(description);
  const Account account = properties ? BasicAccount::initWithProperties(properties) : nullptr;
  if (!account) return nullptr;
  if (const Value* identifier = properties->find(kAccountIdentifier)) {
    account->setAccountPropertyForKey(*identifier, kAccountSyncIdentifier);
  }
  return account;
}

}  // namespace tallbook
