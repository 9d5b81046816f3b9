// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "bench/MigrationFiles.h"

#include <filesystem>
#include <utility>
#include <vector>

#include "tallbook/AccountsManager.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "bench/BenchDevice.h"
#include "model/ServiceFacts.h"

namespace tallbook::bench {
namespace {

namespace fs = std::filesystem;

std::string numbered(const char* name, std::size_t number) {
  return name + std::to_string(number);
}

Value legacyMailAccount(std::size_t number) {
  static const char* const classes[] = {"IMAPAccount", "GmailAccount", "POPAccount",
                                        "VeltroAccount"};
  return Dictionary::make({{"AccountType", classes[number % std::size(classes)]},
                           {"AccountName", numbered("Mail ", number)},
                           {"uniqueId", numbered("mail-", number)},
                           {"Username", numbered("user", number) + "@example.org"},
                           {"Hostname", "mail.example.org"},
                           {"PortNumber", 993},
                           {"SSLEnabled", true},
                           {"IsActive", true}});
}

Value legacyExchangeAccount(std::size_t number) {
  return Dictionary::make({{"SyncoraAccountConfigurationClass", "ExchangeAccount"},
                           {"SyncoraAccountDescription", numbered("Exchange ", number)},
                           {"SyncoraAccountConfigurationAccountID", numbered("exchange-", number)},
                           {"SyncoraAccountEnabledForEmail", number % 2 == 0},
                           {"Username", numbered("user", number)},
                           {"Host", "exchange.example.org"}});
}

// Of every five accounts one is a Gmail account and one the CalDAV account that belongs to it, one
// is of the hosted service, one an umbrella account of its successor, and one plain mail. The first
// umbrella account becomes the device's primary one.
Value accountOfVersionZero(std::size_t number) {
  const std::size_t group = number / 5;
  const std::string user = numbered("user", group);
  const DictionaryRef account =
      Dictionary::make({{kAccountIdentifier, numbered("account-", number)},
                        {kAccountDisplayName, numbered("Account ", number)},
                        {kAccountUsername, user},
                        {"uniqueId", numbered("unique-", number)},
                        {"IsActive", true}});
  const auto become = [&](const String& type, const char* accountClass) {
    account->set(kAccountType, type);
    account->set(kAccountClass, accountClass);
  };
  switch (number % 5) {
    case 0:
      become(kMailAccountType, "GmailAccount");
      break;
    case 1:
      become(kCalDAVAccountType, "MobileCalDAVAccount");
      account->set("CalDAVPrincipalConfiguration",
                   Dictionary::make({{"Login_Key", user},
                                     {"CalDAV_Server_Key", ServiceFacts::kGoogleCalDAVHostname}}));
      account->set(
          "CalDAVAccountConfiguration",
          Dictionary::make({{"CalDAV_PrincipalPath_Key", "/calendar/dav/" + user + "/user"}}));
      break;
    case 2:
      become(kVeltroAccountType, "VeltroAccount");
      account->set(kAccountEnabledDataclasses,
                   Array::make({kAccountDataclassMail, kAccountDataclassNotes}));
      break;
    case 3:
      become(kOrvaneAccountType, "OAAccount");
      account->set(ServiceFacts::kStatusKey, group == 0 ? 2 : 1);
      account->set(kAccountEnabledDataclasses, Array::make({kAccountDataclassDeviceLocator}));
      break;
    default:
      become(kMailAccountType, "IMAPAccount");
      break;
  }
  return account;
}

template <class Make>
Value listOf(std::size_t count, Make make) {
  std::vector<Value> list;
  list.reserve(count);
  for (std::size_t number = 0; number < count; ++number) list.push_back(make(number));
  return Array::make(std::move(list));
}

void write(const std::string& path, const Value& content) {
  writeBytes(path, binaryPropertyList(content).value());
}

}  // namespace

void writeFilesBefore(Before before, std::size_t accounts) {
  fs::remove(tallbookAccountsPath());
  if (before == Before::VersionZero) {
    write(tallbookAccountsPath(),
          Dictionary::make({{kPlistAccountsKey, listOf(accounts, accountOfVersionZero)},
                            {kPlistVersionKey, 0}}));
    return;
  }
  const std::size_t half = accounts / 2;
  write(mailAccountsPath(),
        Dictionary::make({{"MailAccounts", listOf(accounts - half, legacyMailAccount)}}));
  write(syncoraAccountPath(),
        Dictionary::make({{"SyncoraAccountsKey", listOf(half, legacyExchangeAccount)}}));
}

}  // namespace tallbook::bench
