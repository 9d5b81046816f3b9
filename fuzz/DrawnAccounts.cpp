// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "fuzz/DrawnAccounts.h"

#include <algorithm>

#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "fuzz/Check.h"

namespace tallbook::fuzz {
namespace {

const String& anyClass(Drawn& drawn) {
  static const String classes[] = {"IMAPAccount",     "POPAccount",          "GmailAccount",
                                   "YahooAccount",    "AOLAccount",          "PendrelAccount",
                                   "VeltroAccount",   "MorwickIMAPAccount",  "SMTPAccount",
                                   "ExchangeAccount", "MobileCalDAVAccount", "CalDAVAccount",
                                   "OAAccount",       "DeviceLocalAccount",  "SyncoraMailAccount",
                                   "LocalAccount",    "MailAccount"};
  return drawn.oneOf(classes);
}

/// What one repair or another looks for.
const String& knownText(Drawn& drawn) {
  static const String texts[] = {"gus@gmail.com",
                                 "imap.gmail.com",
                                 "www.google.com",
                                 "yves",
                                 "imap.mail.yahoo.com",
                                 "caldav.calendar.yahoo.com",
                                 "pam@pendrel.orvane.example",
                                 "vod@veltro.orvane.example",
                                 "Mail/IMAP-ira@host",
                                 "Mail/POP-pat@host",
                                 "/calendar/dav/gus%40gmail.com/user/",
                                 "/calendar/dav/gus/user",
                                 "gus",
                                 "https://caldav.calendar.yahoo.com/principals/users/yves",
                                 "Veltro",
                                 "Exchange ActiveSync",
                                 "1",
                                 "0"};
  return drawn.oneOf(texts);
}

ArrayRef anyDataclasses(Drawn& drawn) {
  const ArrayRef list = Array::make();
  while (drawn.below(6) > 0) list->append(drawnDataclass(drawn));
  if (drawn.oneIn(16)) list->append(drawnValue(drawn, 1));
  return list;
}

Value anyScalar(Drawn& drawn) {
  switch (drawn.below(10)) {
    case 1:
      return drawn.oneIn(2);
    case 2:
      return drawn.number<std::int64_t>();
    case 3:
      return drawn.number<std::uint64_t>();
    case 4:
      return std::bit_cast<double>(drawn.number<std::uint64_t>());
    case 5:
      return Date{std::bit_cast<double>(drawn.number<std::uint64_t>())};
    case 6:
      return UID{drawn.number<std::uint64_t>()};
    case 7:
      return Data(drawn.bytes(32));
    case 8:
      return drawnText(drawn);
    case 9:
      return drawn.below(16);
    default:
      return nullptr;
  }
}

}  // namespace

String drawnText(Drawn& drawn) {
  std::string text;
  // Every byte is a character; some of two bytes, and one beyond the first plane.
  for (const char c : drawn.bytes(32)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte == 0xff) {
      text += "\U0001F600";
    } else if (byte >= 0x80) {
      text += {char(0xc0 | byte >> 6), char(0x80 | (byte & 0x3f))};
    } else {
      text += c;
    }
  }
  return text;
}

Value drawnValue(Drawn& drawn, int depth) {
  const int shape = depth == 0 ? 0 : drawn.below(4);
  if (shape == 2) {
    const ArrayRef array = Array::make();
    while (drawn.below(6) > 0) array->append(drawnValue(drawn, depth - 1));
    return array;
  }
  if (shape == 3) {
    const DictionaryRef dictionary = Dictionary::make();
    while (drawn.below(6) > 0) dictionary->set(drawnText(drawn), drawnValue(drawn, depth - 1));
    return dictionary;
  }
  return anyScalar(drawn);
}

String drawnIdentifier(Drawn& drawn) {
  static const String identifiers[] = {"a", "b", "c", "d", "e", "f", "g", "h"};
  if (drawn.oneIn(16)) return drawnText(drawn);
  return drawn.oneOf(identifiers);
}

String drawnType(Drawn& drawn) {
  static const String types[] = {kMailAccountType,        kSMTPAccountType,
                                 kExchangeAccountType,    kCalDAVAccountType,
                                 kCardDAVAccountType,     kGmailAccountType,
                                 kYahooAccountType,       kVeltroAccountType,
                                 kOrvaneAccountType,      kMorwickIMAPAccountType,
                                 kOnMyDeviceAccountType,  kLDAPAccountType,
                                 kBookmarkDAVAccountType, kSubscribedCalendarAccountType,
                                 kIMAPNotesAccountType};
  return drawn.oneOf(types);
}

String drawnDataclass(Drawn& drawn) {
  static const String dataclasses[] = {kAccountDataclassMail,        kAccountDataclassContacts,
                                       kAccountDataclassCalendars,   kAccountDataclassReminders,
                                       kAccountDataclassNotes,       kAccountDataclassBookmarks,
                                       kAccountDataclassBackup,      kAccountDataclassUbiquity,
                                       kAccountDataclassMediaStream, "com.orvane.Dataclass.Own"};
  return drawn.oneOf(dataclasses);
}

String drawnKey(Drawn& drawn) {
  static const String keys[] = {kAccountDisplayName,
                                kAccountUsername,
                                kAccountEnabledDataclasses,
                                kAccountProvisionedDataclasses,
                                kAccountSupportedDataclasses,
                                kAccountChildAccounts,
                                kAccountSyncIdentifier,
                                kAccountTypeString,
                                kAccountShortTypeString,
                                kAccountClass,
                                kAccountType,
                                kAccountIdentifier,
                                "IsActive",
                                "AccountPath",
                                "Hostname",
                                "CalDAVEnabled",
                                "CalDAVPrincipalConfiguration",
                                "CalDAVAccountConfiguration",
                                "accountStatus",
                                "primaryAccount",
                                "AccountType",
                                "AccountName",
                                "uniqueId",
                                kCalendarsAccountSubscribedCalendars,
                                "SyncoraExoSubscribedCalendarInfos",
                                "SyncoraAccountConfigurationClass",
                                "SyncoraAccountConfigurationAccountID",
                                "SyncoraAccountDescription",
                                "SyncoraAccountEnabledForCalendar",
                                "SyncoraAccountEnabledForEmail"};
  if (drawn.oneIn(8)) return drawnText(drawn);
  return drawn.oneOf(keys);
}

Value drawnValueOf(Drawn& drawn, const String& key, bool isOfChild) {
  if (drawn.oneIn(16)) return drawnValue(drawn);
  const std::string_view name = key.view();
  const auto isOneOf = [&](std::initializer_list<std::string_view> names) {
    return std::ranges::find(names, name) != names.end();
  };
  if (name.ends_with("Dataclasses")) return anyDataclasses(drawn);
  if (name == kAccountChildAccounts && !isOfChild) return drawnRecords(drawn, true);
  if (name == kAccountType) return drawnType(drawn);
  if (isOneOf({kAccountClass, "AccountType", "SyncoraAccountConfigurationClass"})) {
    return anyClass(drawn);
  }
  if (isOneOf({kAccountIdentifier, kAccountSyncIdentifier, "uniqueId",
               "SyncoraAccountConfigurationAccountID"})) {
    return drawnIdentifier(drawn);
  }
  if (name == "accountStatus") return drawn.below(4);
  if (isOneOf({"IsActive", "primaryAccount", "CalDAVEnabled"})) return drawn.oneIn(2);
  if (name.starts_with("SyncoraAccountEnabledFor")) return drawn.oneIn(2);
  if (name.ends_with("Configuration")) {
    const DictionaryRef below = Dictionary::make();
    for (const char* part : {"Login_Key", "CalDAV_Server_Key", "CalDAV_PrincipalPath_Key"}) {
      if (drawn.below(4) > 0) below->set(part, knownText(drawn));
    }
    if (drawn.oneIn(4)) below->set(drawnKey(drawn), drawnValue(drawn));
    return below;
  }
  if (name.ends_with("Infos")) return Array::make({drawnValue(drawn), drawnValue(drawn)});
  return drawn.oneIn(3) ? drawnText(drawn) : knownText(drawn);
}

DictionaryRef drawnRecord(Drawn& drawn, bool isChild) {
  const DictionaryRef record = Dictionary::make();
  if (!drawn.oneIn(16)) record->set(kAccountType, drawnType(drawn));
  if (!drawn.oneIn(16)) record->set(kAccountClass, anyClass(drawn));
  if (!drawn.oneIn(8)) record->set(kAccountIdentifier, drawnIdentifier(drawn));
  while (drawn.below(8) > 0) {
    const String key = drawnKey(drawn);
    record->set(key, drawnValueOf(drawn, key, isChild));
  }
  return record;
}

ArrayRef drawnRecords(Drawn& drawn, bool areChildren) {
  const ArrayRef records = Array::make();
  while (drawn.below(8) > 0) records->append(drawnRecord(drawn, areChildren));
  if (drawn.oneIn(16)) records->append(drawnValue(drawn));
  if (drawn.oneIn(16) && !records->empty()) records->append((*records)[0]);
  return records;
}

DictionaryRef drawnAccountsFile(Drawn& drawn) {
  const DictionaryRef file = Dictionary::make();
  if (!drawn.oneIn(16)) file->set(kPlistVersionKey, drawn.below(14));
  file->set(kPlistAccountsKey, drawnRecords(drawn));
  if (drawn.oneIn(16)) file->set(kPlistVersionKey, drawnValue(drawn));
  if (drawn.oneIn(16)) file->set(kPlistAccountsKey, drawnValue(drawn));
  if (drawn.oneIn(16)) file->set(drawnText(drawn), drawnValue(drawn));
  return file;
}

std::string drawnFile(Drawn& drawn, const Value& content) {
  const auto bytes = binaryPropertyList(content);
  check(bytes.has_value(), "what is drawn can be written");
  if (drawn.oneIn(16)) {
    const auto xml = xmlPropertyList(content);
    if (xml) return xml->text;
  }
  if (!drawn.oneIn(32)) return *bytes;
  std::string damaged = *bytes;
  damaged[drawn.number<std::uint16_t>() % damaged.size()] ^= char(1 << drawn.below(8));
  return drawn.oneIn(2) ? damaged : drawn.bytes(64);
}

}  // namespace tallbook::fuzz
