// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "bench/PropertyListFiles.h"

#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

namespace tallbook::bench {
namespace {

// As long and as varied as a UUID, so that hashing and comparing cost what they cost in the field.
String identifier(std::size_t record, std::size_t child) {
  char text[48];
  std::snprintf(text, sizeof text, "%08X-5EED-4ACC-8000-%012zX",
                static_cast<unsigned>(record * 2654435761u), record * 1000 + child);
  return text;
}

struct Provider {
  String type;
  const char* accountClass;
  String dataclass;
};

const Provider& providerOf(std::size_t record) {
  static const Provider providers[] = {
      {kMailAccountType, "IMAPAccount", kAccountDataclassMail},
      {kExchangeAccountType, "ExchangeAccount", kAccountDataclassContacts},
      {kCalDAVAccountType, "CalDAVAccount", kAccountDataclassCalendars},
  };
  return providers[record % std::size(providers)];
}

DictionaryRef account(std::size_t record, std::size_t child) {
  const Provider& provider = providerOf(record + child);
  const std::string user = "user" + std::to_string(record) + "." + std::to_string(child);
  return Dictionary::make({{kAccountType, provider.type},
                           {kAccountClass, provider.accountClass},
                           {kAccountIdentifier, identifier(record, child)},
                           {kAccountDisplayName, "Account of " + user},
                           {kAccountEnabledDataclasses, Array::make({provider.dataclass})},
                           {"Username", user + "@example.org"},
                           {"Hostname", "mail" + std::to_string(record % 50) + ".example.org"},
                           {"PortNumber", 993},
                           {"SSLEnabled", true},
                           {"Created", Date{4e8 + static_cast<double>(record)}}});
}

}  // namespace

String identifierOf(std::size_t record) {
  return identifier(record, 0);
}

Value accountsFileTree(std::size_t records, std::size_t childrenPerRecord) {
  std::vector<Value> accounts;
  accounts.reserve(records);
  for (std::size_t record = 0; record < records; ++record) {
    const DictionaryRef top = account(record, 0);
    if (childrenPerRecord > 0) {
      std::vector<Value> children;
      for (std::size_t child = 1; child <= childrenPerRecord; ++child) {
        children.emplace_back(account(record, child));
      }
      top->set(kAccountChildAccounts, Array::make(std::move(children)));
    }
    accounts.emplace_back(top);
  }
  return Dictionary::make({{kPlistAccountsKey, Array::make(std::move(accounts))},
                           {kPlistVersionKey, AccountsManager::currentVersion()}});
}

}  // namespace tallbook::bench
