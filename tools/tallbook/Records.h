// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tallbook/AccountsManager.h"

#include "tools/common/Output.h"

namespace tallbook::tool {

/// A store of the device's accounts, for looking at them; empty where there is no file. Throws
/// Failure for a file that is none.
std::shared_ptr<AccountsManager> storeToRead();
/// The top-level or child record of that identifier, else the only one with that identifier in
/// other capitals, else the only one whose identifier begins so or whose display name, or user name
/// where it has none, is this, whatever the capitals. Throws Failure, with those that may be meant,
/// where there is none or several are.
std::shared_ptr<BasicAccount> recordNamed(const AccountsManager& store, const std::string& name);

/// A record and what a person may call it by: its own names, not those that it has from a parent.
struct NamedRecord {
  std::shared_ptr<BasicAccount> record;
  std::string identifier;
  std::string name;  ///< display name, else user name; may be empty
};
/// All records of a store, children behind the top-level ones.
std::vector<NamedRecord> namedRecords(const AccountsManager& store);

/// The identifier that the file has for the record; empty where the file has none, since the one
/// that the record then receives is another at every load.
std::string storedIdentifier(const BasicAccount& record);

/// The record's identifier as programs hear it; null for one that the file does not hold.
JSON identifierOf(const BasicAccount& record);
/// What programs hear of every account that is listed or shown.
JSON summaryOf(const BasicAccount& record);

/// The strings of a list with commas between them; "none" for none.
std::string joined(const ArrayRef& strings);
/// Throws Failure, with the list of them, for a text that is no account type.
void requireAccountType(const std::string& type);
/// The dataclass that `dataclassNamed` gives. Throws Failure, with the list of them, where it gives
/// none.
String requireDataclass(const std::string& name);

}  // namespace tallbook::tool
