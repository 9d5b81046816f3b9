// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/Records.h"

#include <algorithm>
#include <iterator>

#include "tallbook/DataclassNames.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/AccountsFile.h"
#include "tools/common/Nearest.h"
#include "tools/common/Outcome.h"
#include "tools/tallbook/JSONValue.h"

namespace tallbook::tool {

namespace {

std::shared_ptr<BasicAccount> recordWithIdentifier(const AccountsManager& store,
                                                   std::string_view identifier) {
  const auto topLevel = store.accountWithIdentifier(identifier);
  if (!topLevel || topLevel->identifier() == identifier) return topLevel;
  for (const auto& record : store.allBasicSyncableAccounts()) {
    if (record->parentAccount() && record->identifier() == identifier) return record;
  }
  return nullptr;
}

}  // namespace

std::vector<NamedRecord> namedRecords(const AccountsManager& store) {
  AccountsManager::AccountList records = *store.allBasicAccounts();
  for (const auto& record : store.allBasicSyncableAccounts()) {
    if (record->parentAccount()) records.push_back(record);
  }
  std::vector<NamedRecord> named;
  named.reserve(records.size());
  for (const auto& record : records) {
    const DictionaryRef own = record->properties();
    String name = (*own)[kAccountDisplayName].string();
    if (name.empty()) name = (*own)[kAccountUsername].string();
    named.push_back({record, record->identifier().str(), name.str()});
  }
  return named;
}

std::shared_ptr<AccountsManager> storeToRead() {
  const AccountsFile file = readAccountsFile();
  if (file.isUnusable()) {
    throw unusable(file, "restore it from a copy, or see \"tallbook check\"");
  }
  requirePrintable(file);
  noteMissing(file);
  return AccountsManager::initWithAccountsFile(file);
}

std::shared_ptr<BasicAccount> recordNamed(const AccountsManager& store, const std::string& name) {
  if (auto record = recordWithIdentifier(store, name)) return record;
  const std::vector<NamedRecord> all = namedRecords(store);
  // The first way of naming that fits any account is meant.
  const auto isIdentifier = [&](const NamedRecord& each) {
    return isSameWord(each.identifier, name);
  };
  const auto isNear = [&](const NamedRecord& each) {
    return isSameWord(each.name, name) || beginsWith(each.identifier, name);
  };
  std::vector<NamedRecord> fitting;
  std::ranges::copy_if(all, std::back_inserter(fitting), isIdentifier);
  if (fitting.empty() && !name.empty()) {
    std::ranges::copy_if(all, std::back_inserter(fitting), isNear);
  }
  if (fitting.size() == 1) return fitting.front().record;
  if (fitting.empty()) {
    std::vector<std::string> known;
    for (const NamedRecord& each : all) known.insert(known.end(), {each.name, each.identifier});
    const std::string advice = adviceOnMisspelt(name, known);
    throw Failure(ExitCode::NotFound,
                  "no account is called " + shortened(name) +
                      (advice.empty() ? "; \"tallbook list\" shows those there are" : advice));
  }
  std::string candidates;
  for (const NamedRecord& each : fitting) {
    candidates += (candidates.empty() ? "" : ", ") + shortened(each.record->nameForPeople()) +
                  " (" + each.record->type().str() + ", " + shortened(each.identifier) + ")";
  }
  throw Failure(ExitCode::NotFound,
                shortened(name) + " may be any of " + candidates + "; give more of the identifier");
}

std::string storedIdentifier(const BasicAccount& record) {
  return (*record.originalProperties())[kAccountIdentifier].string().str();
}

JSON identifierOf(const BasicAccount& record) {
  const std::string identifier = storedIdentifier(record);
  return identifier.empty() ? JSON() : JSON(identifier);
}

JSON summaryOf(const BasicAccount& record) {
  JSON object = JSON::object();
  object["identifier"] = identifierOf(record);
  object["name"] = record.nameForPeople();
  object["type"] = record.type().str();
  object["class"] = record.accountClass().str();
  object["enabled"] = jsonFromValue(record.enabledDataclasses());
  return object;
}

std::string joined(const ArrayRef& strings) {
  return strings ? shortNamesOfDataclasses(strings) : "none";
}

void requireAccountType(const std::string& type) {
  if (BasicAccount::_isValidAccountType(type)) return;
  std::string known;
  for (const String& each : BasicAccount::allAccountTypes())
    known += (known.empty() ? "" : ", ") + each.str();
  throw Failure(ExitCode::Usage, "there is no account type \"" + type + "\"; there are: " + known);
}

String requireDataclass(const std::string& name) {
  if (String dataclass = dataclassNamed(name)) return dataclass;
  throw Failure(ExitCode::Usage,
                "there is no dataclass \"" + name + "\"; there are: " +
                    shortNamesOfDataclasses(BasicAccount::allSupportedDataclasses()));
}

}  // namespace tallbook::tool
