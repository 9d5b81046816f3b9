// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Vocabulary.h"

#include "platform/propertylist/ConstantText.h"

// Made by the compiler, so that they can be used while other static objects are being made, and so
// that nothing runs over them when a process meets a second copy of the library: the dynamic linker
// lets both copies use the constants of the first.
namespace tallbook {

// Account types.
constinit const String kSubscribedCalendarAccountType(constantText<"Subscribed Calendar">);
constinit const String kCalDAVAccountType(constantText<"CalDAV">);
constinit const String kCardDAVAccountType(constantText<"CardDAV">);
constinit const String kBookmarkDAVAccountType(constantText<"BookmarkDAV">);
constinit const String kSMTPAccountType(constantText<"SMTP">);
constinit const String kExchangeAccountType(constantText<"Exchange">);
constinit const String kLDAPAccountType(constantText<"LDAP">);
constinit const String kMailAccountType(constantText<"Mail">);
constinit const String kVeltroAccountType(constantText<"Veltro">);
constinit const String kGmailAccountType(constantText<"Gmail">);
constinit const String kYahooAccountType(constantText<"Yahoo">);
constinit const String kOnMyDeviceAccountType(constantText<"OnMyDevice">);
constinit const String kIMAPNotesAccountType(constantText<"IMAPNotes">);
constinit const String kOrvaneAccountType(constantText<"OrvaneAccount">);
constinit const String kMorwickIMAPAccountType(constantText<"MorwickIMAP">);

// Dataclasses.
constinit const String kAccountDataclassMail(constantText<"com.orvane.Dataclass.Mail">);
constinit const String kAccountDataclassContacts(constantText<"com.orvane.Dataclass.Contacts">);
constinit const String kAccountDataclassCalendars(constantText<"com.orvane.Dataclass.Calendars">);
constinit const String kAccountDataclassReminders(constantText<"com.orvane.Dataclass.Reminders">);
constinit const String kAccountDataclassBookmarks(constantText<"com.orvane.Dataclass.Bookmarks">);
constinit const String kAccountDataclassNotes(constantText<"com.orvane.Dataclass.Notes">);
constinit const String kAccountDataclassMediaStream(
    constantText<"com.orvane.Dataclass.MediaStream">);
constinit const String kAccountDataclassDeviceLocator(
    constantText<"com.orvane.Dataclass.DeviceLocator">);
constinit const String kAccountDataclassContactsSearch(
    constantText<"com.orvane.Dataclass.ContactsSearch">);
constinit const String kAccountDataclassBackup(constantText<"com.orvane.Dataclass.Backup">);
constinit const String kAccountDataclassUbiquity(constantText<"com.orvane.Dataclass.Ubiquity">);
constinit const String kAccountDataclassKeyValue(constantText<"com.orvane.Dataclass.KeyValue">);
constinit const String kAccountDataclassPouchet(constantText<"com.orvane.Dataclass.Pouchet">);
constinit const String kAccountDataclassSharedStreams(
    constantText<"com.orvane.Dataclass.SharedStreams">);

// Keys of an account record.
constinit const String kAccountIdentifier(constantText<"Identifier">);
constinit const String kAccountSyncIdentifier(constantText<"Sync Identifier">);
constinit const String kAccountType(constantText<"Type">);
constinit const String kAccountClass(constantText<"Class">);
constinit const String kAccountDisplayName(constantText<"DisplayName">);
constinit const String kAccountEnabledDataclasses(constantText<"Enabled Dataclasses">);
constinit const String kAccountProvisionedDataclasses(constantText<"Provisioned Dataclasses">);
constinit const String kAccountSupportedDataclasses(constantText<"Supported Dataclasses">);
constinit const String kAccountUsername(constantText<"Username">);
constinit const String kAccountTypeString(constantText<"Type String">);
constinit const String kAccountShortTypeString(constantText<"Short Type String">);
constinit const String kAccountPreventRecentsSyncing(constantText<"Prevent Recents Syncing">);
constinit const String kCalendarsAccountSubscribedCalendars(constantText<"Subscribed Calendars">);
constinit const String kAccountCalendarsWereMigrated(constantText<"CalendarsWereMigrated">);
constinit const String kAccountChildAccounts(constantText<"ChildAccounts">);

// Keys of an account type's entry in the catalogue.
constinit const String kPropertiesSupportedDataclasses(constantText<"Supported Dataclasses">);
constinit const String kPropertiesEnableDataclassActions(constantText<"Enable Actions">);
constinit const String kPropertiesDisableDataclassActions(constantText<"Disable Actions">);
constinit const String kPropertiesDeleteAccountActions(constantText<"Delete Account Actions">);
constinit const String kPropertiesShowRemindersSeparately(
    constantText<"Show Reminders Separately">);

// Keys of a dataclass's entry in the dataclass properties.
constinit const String kDataclassSupportsMultipleStores(constantText<"Supports Multiple Stores">);
constinit const String kDataclassDisplaySwitch(constantText<"Display Dataclass Switch">);
constinit const String kDataclassRequiresUserConfirmation(
    constantText<"Requires User Confirmation">);

// Toggle actions.
constinit const String kDataclassToggleActionNone(constantText<"None">);
constinit const String kDataclassToggleActionKeepLocalData(constantText<"Keep Local Data">);
constinit const String kDataclassToggleActionMergeLocalData(constantText<"Merge Local Data">);
constinit const String kDataclassToggleActionDeleteLocalData(constantText<"Delete Local Data">);
constinit const String kDataclassToggleActionMergeSyncData(constantText<"Merge Sync Data">);
constinit const String kDataclassToggleActionDeleteSyncData(constantText<"Delete Sync Data">);

// Delete actions.
constinit const String kAccountDeleteActionMergeData(constantText<"Merge Data">);
constinit const String kAccountDeleteActionDeleteData(constantText<"Delete Data">);

// Keys of a change record, as notifier classes receive it.
constinit const String kTBChangeAccountChangeTypeKey(constantText<"ChangeType">);
constinit const String kTBChangeAccountIdentifierKey(constantText<"AccountID">);
constinit const String kTBChangeAccountTypeKey(constantText<"AccountType">);
constinit const String kTBChangeAccountOriginallyEnabledDataclassesKey(
    constantText<"OriginalDataclasses">);

// The accounts file.
constinit const String kAccountsFilename(constantText<"com.orvane.tallbook.plist">);
constinit const String kPlistVersionKey(constantText<"Version">);
constinit const String kPlistAccountsKey(constantText<"Accounts">);

}  // namespace tallbook

const char* const kAccountMigrationLockFilename = "/tmp/AccountMigrationInProgress";
