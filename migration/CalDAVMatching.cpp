// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>

#include "tallbook/Vocabulary.h"

#include "migration/AccountsDataMigrator.h"
#include "migration/CalDAVPrincipal.h"
#include "model/ServiceFacts.h"

namespace tallbook {
namespace {

// The characters of RFC 2396 that a URL's path holds as they are, without "@", "?" and "/".
constexpr std::string_view kUnescaped =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.!~*'();:&=+$,";

String entry(const AccountsDataMigrator::Account& account, std::string_view configuration,
             std::string_view key) {
  const DictionaryRef dictionary = account->accountPropertyForKey(configuration).dictionary();
  return dictionary ? (*dictionary)[key].string() : nullptr;
}

}  // namespace

std::string AccountsDataMigrator::_urlSafeUsername(std::string_view username) {
  constexpr std::string_view kHexadecimal = "0123456789ABCDEF";
  std::string safe;
  for (const char character : username) {
    if (kUnescaped.find(character) != std::string_view::npos) {
      safe += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    safe += {'%', kHexadecimal[byte >> 4], kHexadecimal[byte & 15]};
  }
  return safe;
}

std::vector<std::string> AccountsDataMigrator::_expectedCalDAVUsernamesForAccount(
    const Account& account) {
  const String username = account->accountPropertyForKey(kAccountUsername).string();
  if (!username) return {};
  const auto at = username.view().find('@');
  if (at == std::string_view::npos) return {username.str()};
  return {username.str(), std::string(username.view().substr(0, at))};
}

String AccountsDataMigrator::_expectedCalDAVHostnameForAccount(const Account& account) {
  const String accountClass = account->accountClass();
  if (accountClass == "GmailAccount") return ServiceFacts::kGoogleCalDAVHostname;
  if (accountClass == "YahooAccount") return ServiceFacts::kYahooCalDAVHostname;
  return nullptr;
}

std::vector<std::string> AccountsDataMigrator::_expectedCalDAVPrincipalURLsForAccount(
    const Account& account) {
  const String accountClass = account->accountClass();
  std::vector<std::string> paths;
  for (const std::string& username : _expectedCalDAVUsernamesForAccount(account)) {
    const std::string safe = _urlSafeUsername(username);
    if (accountClass == "GmailAccount") paths.push_back("/calendar/dav/" + safe + "/user");
    if (accountClass == "YahooAccount") paths.push_back("/principals/users/" + safe);
  }
  return paths;
}

std::optional<CalDAVPrincipal> principalOfCalDAVAccount(
    const AccountsDataMigrator::Account& account) {
  constexpr std::string_view kPrincipal = "CalDAVPrincipalConfiguration";
  const String server = entry(account, kPrincipal, "CalDAV_Server_Key");
  const String login = entry(account, kPrincipal, "Login_Key");
  const String path = entry(account, "CalDAVAccountConfiguration", "CalDAV_PrincipalPath_Key");
  if (!server || !login || !path) return std::nullopt;
  return CalDAVPrincipal{server.str(), login.str(), path.str()};
}

std::vector<CalDAVPrincipal> expectedPrincipalsForAccount(
    const AccountsDataMigrator::Account& account) {
  std::vector<CalDAVPrincipal> expected;
  const String server = AccountsDataMigrator::_expectedCalDAVHostnameForAccount(account);
  if (!server) return expected;
  const auto paths = AccountsDataMigrator::_expectedCalDAVPrincipalURLsForAccount(account);
  for (const auto& login : AccountsDataMigrator::_expectedCalDAVUsernamesForAccount(account)) {
    for (const std::string& path : paths) expected.push_back({server.str(), login, path});
  }
  return expected;
}

bool AccountsDataMigrator::_calDAVAccountMatchesUmbrellaAccount(const Account& calDAVAccount,
                                                                const Account& umbrellaAccount) {
  const auto principal = principalOfCalDAVAccount(calDAVAccount);
  const auto expected = expectedPrincipalsForAccount(umbrellaAccount);
  return principal && std::ranges::find(expected, *principal) != expected.end();
}

}  // namespace tallbook
