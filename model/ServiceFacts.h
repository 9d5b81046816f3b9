// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

/// What the accounts layer has to know of the services behind the accounts: their hosts and mail
/// domains, and the property keys that their own libraries define. All of it stands here.
namespace tallbook::ServiceFacts {

/// Domain of Gmail addresses.
inline constexpr std::string_view kGmailMailDomain = "gmail.com";
/// Gmail's IMAP server; part of the mail-data path of a Gmail account.
inline constexpr std::string_view kGmailIMAPHostname = "imap.gmail.com";
/// A Yahoo IMAP server; part of the mail-data path of a Yahoo account.
inline constexpr std::string_view kYahooIMAPHostname = "imap.mail.yahoo.com";

/// Server of the calendars that belong to a Gmail account.
inline constexpr std::string_view kGoogleCalDAVHostname = "www.google.com";
/// Server of the calendars that belong to a Yahoo account.
inline constexpr std::string_view kYahooCalDAVHostname = "caldav.calendar.yahoo.com";

/// Mail domain of the hosted service's accounts of the class "PendrelAccount".
inline constexpr std::string_view kPendrelMailDomain = "pendrel.orvane.example";
/// Mail domain of the hosted service's accounts of the class "VeltroAccount".
inline constexpr std::string_view kVeltroMailDomain = "veltro.orvane.example";

/// Integer property: the hosted service's status of an account.
inline constexpr std::string_view kStatusKey = "accountStatus";
/// A standard account, and one whose status the upgrade looks into.
inline constexpr int kStatusStandard = 1;
inline constexpr int kStatusToInspect = 2;
/// Boolean property: the hosted service's one primary account of the device.
inline constexpr std::string_view kPrimaryAccountKey = "primaryAccount";

}  // namespace tallbook::ServiceFacts
