// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/RecordKeys.h"

#include "tallbook/Vocabulary.h"

namespace tallbook {

const std::vector<std::pair<String, Value::Kind>>& kindsOfKeys() {
  using Kind = Value::Kind;
  static const std::vector<std::pair<String, Kind>> kinds{
      {kAccountIdentifier, Kind::String},
      {kAccountSyncIdentifier, Kind::String},
      {kAccountType, Kind::String},
      {kAccountClass, Kind::String},
      {kAccountDisplayName, Kind::String},
      {kAccountUsername, Kind::String},
      {kAccountTypeString, Kind::String},
      {kAccountShortTypeString, Kind::String},
      {kAccountEnabledDataclasses, Kind::Array},
      {kAccountProvisionedDataclasses, Kind::Array},
      {kCalendarsAccountSubscribedCalendars, Kind::Array},
      {kAccountChildAccounts, Kind::Array},
      {kAccountPreventRecentsSyncing, Kind::Null},
      {kAccountCalendarsWereMigrated, Kind::Null},
  };
  return kinds;
}

Value::Kind kindOfKey(std::string_view key) {
  for (const auto& [known, kind] : kindsOfKeys()) {
    if (known == key) return kind;
  }
  return Value::Kind::Null;
}

std::string whyKeyIsFixed(std::string_view key) {
  if (key != kAccountType.view() && key != kAccountIdentifier.view()) return "";
  return "\"" + std::string(key) +
         "\" is what makes the record this one and cannot be changed; add another account and "
         "remove this one";
}

}  // namespace tallbook
