// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "tallbook/Export.h"
#include "tallbook/String.h"

/// @file
/// The fixed strings of the accounts layer. Their values are part of the stored format and of the
/// contract with other components: compare against the constants, never retype the text.

namespace tallbook {

/// @defgroup types Account types
/// Values of `kAccountType`, keys of the account type catalogue and of the creators information.
/// @{

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
/// @}

/// @defgroup dataclasses Dataclasses
/// The kinds of data that an account can carry, in canonical order.
/// @{

extern TALLBOOK_EXPORT const String kAccountDataclassMail;      ///< mail
extern TALLBOOK_EXPORT const String kAccountDataclassContacts;  ///< contacts
/// Calendars, and reminders where they are not separate.
extern TALLBOOK_EXPORT const String kAccountDataclassCalendars;
extern TALLBOOK_EXPORT const String kAccountDataclassReminders;      ///< reminders
extern TALLBOOK_EXPORT const String kAccountDataclassBookmarks;      ///< bookmarks
extern TALLBOOK_EXPORT const String kAccountDataclassNotes;          ///< notes
extern TALLBOOK_EXPORT const String kAccountDataclassMediaStream;    ///< the photo stream
extern TALLBOOK_EXPORT const String kAccountDataclassDeviceLocator;  ///< finding the device
/// Searching a directory for contacts.
extern TALLBOOK_EXPORT const String kAccountDataclassContactsSearch;
extern TALLBOOK_EXPORT const String kAccountDataclassBackup;    ///< backups to the cloud
extern TALLBOOK_EXPORT const String kAccountDataclassUbiquity;  ///< documents in the cloud
/// Programs' key-value pairs in the cloud.
extern TALLBOOK_EXPORT const String kAccountDataclassKeyValue;
extern TALLBOOK_EXPORT const String kAccountDataclassPouchet;        ///< cards and passes
extern TALLBOOK_EXPORT const String kAccountDataclassSharedStreams;  ///< shared photo streams
/// @}

/// @defgroup recordkeys Keys of an account record
/// With the kind of value that is stored under them. A value of another kind counts as absent.
/// @{

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
/// @}

/// @defgroup typekeys Keys of an account type's entry in the catalogue
/// @{

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
/// @}

/// @defgroup dataclasskeys Keys of a dataclass's entry in the dataclass properties
/// @{

/// Boolean: its data can live in several stores at once.
extern TALLBOOK_EXPORT const String kDataclassSupportsMultipleStores;
/// Boolean: settings show an on/off switch for it.
extern TALLBOOK_EXPORT const String kDataclassDisplaySwitch;
/// Boolean: turning it on or off asks the user to confirm.
extern TALLBOOK_EXPORT const String kDataclassRequiresUserConfirmation;
/// @}

/// @defgroup toggleactions Toggle actions
/// Choices offered when a dataclass is turned on or off: the members of
/// `kPropertiesEnableDataclassActions` and `kPropertiesDisableDataclassActions`.
/// @{

/// What is done with the data on the device (local), or with that of the account (sync).
/// @{
extern TALLBOOK_EXPORT const String kDataclassToggleActionNone;
extern TALLBOOK_EXPORT const String kDataclassToggleActionKeepLocalData;
extern TALLBOOK_EXPORT const String kDataclassToggleActionMergeLocalData;
extern TALLBOOK_EXPORT const String kDataclassToggleActionDeleteLocalData;
extern TALLBOOK_EXPORT const String kDataclassToggleActionMergeSyncData;
extern TALLBOOK_EXPORT const String kDataclassToggleActionDeleteSyncData;
/// @}
/// @}

/// @defgroup deleteactions Delete actions
/// Choices offered when an account is deleted: the members of `kPropertiesDeleteAccountActions`.
/// @{

/// What is done with the account's data on the device.
/// @{
extern TALLBOOK_EXPORT const String kAccountDeleteActionMergeData;
extern TALLBOOK_EXPORT const String kAccountDeleteActionDeleteData;
/// @}
/// @}

/// @defgroup changekeys Keys of a change record
/// As notifier classes receive it (`PlugInClass::noteAccountChanges`).
/// @{

/// Integer: 0 added, 1 kept and possibly changed, 2 removed.
extern TALLBOOK_EXPORT const String kTBChangeAccountChangeTypeKey;
/// String: identifier of the account.
extern TALLBOOK_EXPORT const String kTBChangeAccountIdentifierKey;
extern TALLBOOK_EXPORT const String kTBChangeAccountTypeKey;  ///< string: type of the account
/// Array: dataclasses enabled before the change.
extern TALLBOOK_EXPORT const String kTBChangeAccountOriginallyEnabledDataclassesKey;
/// @}

/// @defgroup filekeys The accounts file
/// Its name and its top-level keys.
/// @{

/// Name of the file in the preferences directory.
extern TALLBOOK_EXPORT const String kAccountsFilename;
extern TALLBOOK_EXPORT const String kPlistVersionKey;  ///< integer: format version
/// Array of the top-level records' dictionaries.
extern TALLBOOK_EXPORT const String kPlistAccountsKey;
/// @}

}  // namespace tallbook

/// Path of the file behind the migration lock, for processes that coordinate with a migration.
extern "C" TALLBOOK_EXPORT const char* const kAccountMigrationLockFilename;
