#pragma once

#include <string_view>

/// Names of the mail providers' hosts and domains that stored accounts are recognised by.
namespace tallbook::MailProviders {

/// Domain of Gmail addresses.
inline constexpr std::string_view kGmailMailDomain = "gmail.com";
/// Gmail's IMAP server.
inline constexpr std::string_view kGmailIMAPHostname = "imap.gmail.com";
/// Yahoo's IMAP server.
inline constexpr std::string_view kYahooIMAPHostname = "imap.mail.yahoo.com";

}  // namespace tallbook::MailProviders
