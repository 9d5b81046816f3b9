#include <algorithm>

#include "tallbook/Vocabulary.h"

#include "migration/AccountsDataMigrator.h"
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

bool isAmong(const String& text, const std::vector<std::string>& list) {
  return text && std::ranges::find(list, text.view()) != list.end();
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

bool AccountsDataMigrator::_calDAVAccountMatchesUmbrellaAccount(const Account& calDAVAccount,
                                                                const Account& umbrellaAccount) {
  constexpr std::string_view kPrincipal = "CalDAVPrincipalConfiguration";
  const String server = entry(calDAVAccount, kPrincipal, "CalDAV_Server_Key");
  return server && server == _expectedCalDAVHostnameForAccount(umbrellaAccount) &&
         isAmong(entry(calDAVAccount, kPrincipal, "Login_Key"),
                 _expectedCalDAVUsernamesForAccount(umbrellaAccount)) &&
         isAmong(entry(calDAVAccount, "CalDAVAccountConfiguration", "CalDAV_PrincipalPath_Key"),
                 _expectedCalDAVPrincipalURLsForAccount(umbrellaAccount));
}

}  // namespace tallbook
