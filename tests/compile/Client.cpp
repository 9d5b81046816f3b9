// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A client's code, never run. Without a case it is what a client should write; each case adds what
// must not compile.
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_set>

#include "tallbook/AccountsManager.h"
#include "tallbook/BasicAccount.h"
#include "tallbook/PropertyList.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"
#include "tallbook/Vocabulary.h"

using namespace tallbook;

enum Colour { kRed };

void client(BasicAccount& account, AccountsManager& store, std::ostream& out) {
  // Ranges
#ifdef LOOP_OVER_DEREFERENCED_TEMPORARY
  for (const Value& dataclass : *account.provisionedDataclasses()) out << dataclass.string();
#endif
#ifdef ITERATOR_INTO_TEMPORARY
  const auto first = account.provisionedDataclasses().begin();
  out << first->string();
#endif
  for (const Value& dataclass : account.provisionedDataclasses()) out << dataclass.string();
  for (const auto& [key, value] : account.propertiesToSave()) out << key << value.description();
  if (!account.enabledDataclasses().empty()) out << account.enabledDataclasses()[0].string();
  const ArrayRef dataclasses = account.supportedDataclasses();
  for (const Value& dataclass : *dataclasses) out << dataclass.string();
  const Value& stored = account.properties()[kAccountUsername];
  const Value& kept = account.propertiesToSave()["Username"];
  out << (stored == kept) << dataclasses.size();

  // Texts
#ifdef VIEW_OF_TEMPORARY_STRING
  const std::string_view view = account.type();
  out << view;
#endif
#ifdef EXPLICIT_VIEW_OF_TEMPORARY_STRING
  out << account.type().view();
#endif
#ifdef VIEW_INTO_TEMPORARY_VALUE
  out << account.accountPropertyForKey("Username").stringView().value_or("");
#endif
  const String type = account.type();
  const std::string_view typeView = type;
  const std::string copied(account.type());
  std::unordered_set<String> types{type, kMailAccountType};
  std::map<String, int> order{{type, 1}};
  out << account.type() << typeView << copied << types.count(type) << order.size();
  out << (account.type() == "Mail") << (copied < account.type()) << (type <= kMailAccountType)
      << (account.type() == copied) << (type != nullptr);

  // Values
#ifdef NARROW_CHARACTER_AS_VALUE
  account.setAccountPropertyForKey('1', "Port");
#endif
#ifdef UTF8_CHARACTER_AS_VALUE
  account.setAccountPropertyForKey(u8'1', "Port");
#endif
#ifdef WIDE_CHARACTER_AS_VALUE
  account.setAccountPropertyForKey(L'1', "Port");
#endif
#ifdef ENUMERATOR_AS_VALUE
  account.setAccountPropertyForKey(kRed, "Colour");
#endif
  account.setAccountPropertyForKey(993, "Port");
  account.setAccountPropertyForKey(993ULL, "Port");
  account.setAccountPropertyForKey(0.5F, "Share");
  account.setAccountPropertyForKey(true, "UsesSSL");

  // Answers that are all that the call is for
#ifdef IGNORED_SAVE
  store.saveAllAccounts();
#endif
#ifdef IGNORED_MIGRATION_LOCK
  AccountsManager::createAndLockMigrationLock();
#endif
#ifdef IGNORED_RECORD
  BasicAccount::accountWithProperties(account.properties());
#endif
#ifdef IGNORED_COPY
  dataclasses->mutableCopy();
#endif
#ifdef IGNORED_BYTES
  binaryPropertyList(stored);
#endif
  if (!store.saveAllAccounts()) out << "not saved";
}
