#pragma once

#include "tallbook/Export.h"
#include "tallbook/String.h"

/// The fixed strings of the accounts layer. Their values are part of the stored format and of the
/// contract with other components: compare against the constants, never retype the text.
namespace tallbook {

// Account types: values of `kAccountType`, keys of the account type catalogue and of the creators
// information.
/// A subscribed calendar; its group has a title of its own.
extern TALLBOOK_EXPORT const String kSubscribedCalendarAccountType;
/// CalDAV calendars, also as a child of an umbrella account.
extern TALLBOOK_EXPORT const String kCalDAVAccountType;
extern TALLBOOK_EXPORT const String kCardDAVAccountType;      ///< CardDAV contacts
extern TALLBOOK_EXPORT const String kBookmarkDAVAccountType;  ///< a bookmarks server
extern TALLBOOK_EXPORT const String kSMTPAccountType;      ///< an outgoing (delivery) mail server
extern TALLBOOK_EXPORT const String kExchangeAccountType;  ///< Exchange ActiveSync
extern TALLBOOK_EXPORT const String kLDAPAccountType;      ///< an LDAP directory
extern TALLBOOK_EXPORT const String kMailAccountType;      ///< generic incoming mail (IMAP or POP)
extern TALLBOOK_EXPORT const String kVeltroAccountType;  ///< the platform's earlier hosted service
extern TALLBOOK_EXPORT const String kGmailAccountType;   ///< Gmail
extern TALLBOOK_EXPORT const String kYahooAccountType;   ///< Yahoo
extern TALLBOOK_EXPORT const String kOnMyDeviceAccountType;  ///< the single on-device account
extern TALLBOOK_EXPORT const String kIMAPNotesAccountType;   ///< notes on an IMAP server
/// Umbrella account of the current hosted service; has children.
extern TALLBOOK_EXPORT const String kOrvaneAccountType;
/// Mail of the current hosted service.
extern TALLBOOK_EXPORT const String kMorwickIMAPAccountType;

// Dataclasses: the kinds of data that an account can carry, in canonical order.
extern TALLBOOK_EXPORT const String kAccountDataclassMail;
extern TALLBOOK_EXPORT const String kAccountDataclassContacts;
extern TALLBOOK_EXPORT const String kAccountDataclassCalendars;
extern TALLBOOK_EXPORT const String kAccountDataclassReminders;
extern TALLBOOK_EXPORT const String kAccountDataclassBookmarks;
extern TALLBOOK_EXPORT const String kAccountDataclassNotes;
extern TALLBOOK_EXPORT const String kAccountDataclassMediaStream;
extern TALLBOOK_EXPORT const String kAccountDataclassDeviceLocator;
extern TALLBOOK_EXPORT const String kAccountDataclassContactsSearch;
extern TALLBOOK_EXPORT const String kAccountDataclassBackup;
extern TALLBOOK_EXPORT const String kAccountDataclassUbiquity;
extern TALLBOOK_EXPORT const String kAccountDataclassKeyValue;
extern TALLBOOK_EXPORT const String kAccountDataclassPouchet;
extern TALLBOOK_EXPORT const String kAccountDataclassSharedStreams;

// Keys of an account record.
extern TALLBOOK_EXPORT const String kAccountIdentifier;  ///< string: the record's unique identifier
/// String: identifier of the sync store behind the record.
extern TALLBOOK_EXPORT const String kAccountSyncIdentifier;
extern TALLBOOK_EXPORT const String kAccountType;  ///< string: one of the account types
/// String: name of the class of the record's full account.
extern TALLBOOK_EXPORT const String kAccountClass;
extern TALLBOOK_EXPORT const String kAccountDisplayName;  ///< string: name shown to the user
/// Array of dataclasses that the user turned on.
extern TALLBOOK_EXPORT const String kAccountEnabledDataclasses;
/// Array of dataclasses that the account may use; absent: all supported ones.
extern TALLBOOK_EXPORT const String kAccountProvisionedDataclasses;
/// Key of a notifier's description; never read from a record.
extern TALLBOOK_EXPORT const String kAccountSupportedDataclasses;
extern TALLBOOK_EXPORT const String kAccountUsername;  ///< string: the account's user name
/// String: localised name of the kind of account.
extern TALLBOOK_EXPORT const String kAccountTypeString;
extern TALLBOOK_EXPORT const String kAccountShortTypeString;  ///< string: short form of the same
extern TALLBOOK_EXPORT const String kAccountPreventRecentsSyncing;  ///< boolean, kept for clients
/// Array: subscribed calendars of a calendar account.
extern TALLBOOK_EXPORT const String kCalendarsAccountSubscribedCalendars;
extern TALLBOOK_EXPORT const String kAccountCalendarsWereMigrated;  ///< boolean, kept for clients
/// Array of the child records' dictionaries.
extern TALLBOOK_EXPORT const String kAccountChildAccounts;

// Keys of an account type's entry in the catalogue.
/// Array of dataclasses that the type can carry.
extern TALLBOOK_EXPORT const String kPropertiesSupportedDataclasses;
/// Array of toggle actions offered when a dataclass is turned on.
extern TALLBOOK_EXPORT const String kPropertiesEnableDataclassActions;
/// Array of toggle actions offered when one is turned off.
extern TALLBOOK_EXPORT const String kPropertiesDisableDataclassActions;
/// Array of delete actions offered when an account is deleted.
extern TALLBOOK_EXPORT const String kPropertiesDeleteAccountActions;
/// Boolean: reminders are a dataclass of their own.
extern TALLBOOK_EXPORT const String kPropertiesShowRemindersSeparately;

// Keys of a dataclass's entry in the dataclass properties.
/// Boolean: its data can live in several stores at once.
extern TALLBOOK_EXPORT const String kDataclassSupportsMultipleStores;
/// Boolean: settings show an on/off switch for it.
extern TALLBOOK_EXPORT const String kDataclassDisplaySwitch;
/// Boolean: turning it on or off asks the user to confirm.
extern TALLBOOK_EXPORT const String kDataclassRequiresUserConfirmation;

// Toggle actions: choices offered when a dataclass is turned on or off.
extern TALLBOOK_EXPORT const String kDataclassToggleActionNone;
extern TALLBOOK_EXPORT const String kDataclassToggleActionKeepLocalData;
extern TALLBOOK_EXPORT const String kDataclassToggleActionMergeLocalData;
extern TALLBOOK_EXPORT const String kDataclassToggleActionDeleteLocalData;
extern TALLBOOK_EXPORT const String kDataclassToggleActionMergeSyncData;
extern TALLBOOK_EXPORT const String kDataclassToggleActionDeleteSyncData;

// Delete actions: choices offered when an account is deleted.
extern TALLBOOK_EXPORT const String kAccountDeleteActionMergeData;
extern TALLBOOK_EXPORT const String kAccountDeleteActionDeleteData;

// Keys of a change record, as notifier classes receive it.
/// Integer: 0 added, 1 kept and possibly changed, 2 removed.
extern TALLBOOK_EXPORT const String kTBChangeAccountChangeTypeKey;
/// String: identifier of the account.
extern TALLBOOK_EXPORT const String kTBChangeAccountIdentifierKey;
extern TALLBOOK_EXPORT const String kTBChangeAccountTypeKey;  ///< string: type of the account
/// Array: dataclasses enabled before the change.
extern TALLBOOK_EXPORT const String kTBChangeAccountOriginallyEnabledDataclassesKey;

// The accounts file: its name and its top-level keys.
/// Name of the file in the preferences directory.
extern TALLBOOK_EXPORT const String kAccountsFilename;
extern TALLBOOK_EXPORT const String kPlistVersionKey;  ///< integer: format version
/// Array of the top-level records' dictionaries.
extern TALLBOOK_EXPORT const String kPlistAccountsKey;

}  // namespace tallbook

/// Path of the file behind the migration lock, for processes that coordinate with a migration.
extern "C" TALLBOOK_EXPORT const char* const kAccountMigrationLockFilename;
