#include "tallbook/Vocabulary.h"

namespace tallbook {

// Account types.
const String kSubscribedCalendarAccountType = "Subscribed Calendar";
const String kCalDAVAccountType = "CalDAV";
const String kCardDAVAccountType = "CardDAV";
const String kBookmarkDAVAccountType = "BookmarkDAV";
const String kSMTPAccountType = "SMTP";
const String kExchangeAccountType = "Exchange";
const String kLDAPAccountType = "LDAP";
const String kMailAccountType = "Mail";
const String kVeltroAccountType = "Veltro";
const String kGmailAccountType = "Gmail";
const String kYahooAccountType = "Yahoo";
const String kOnMyDeviceAccountType = "OnMyDevice";
const String kIMAPNotesAccountType = "IMAPNotes";
const String kOrvaneAccountType = "OrvaneAccount";
const String kMorwickIMAPAccountType = "MorwickIMAP";

// Dataclasses.
const String kAccountDataclassMail = "com.orvane.Dataclass.Mail";
const String kAccountDataclassContacts = "com.orvane.Dataclass.Contacts";
const String kAccountDataclassCalendars = "com.orvane.Dataclass.Calendars";
const String kAccountDataclassReminders = "com.orvane.Dataclass.Reminders";
const String kAccountDataclassBookmarks = "com.orvane.Dataclass.Bookmarks";
const String kAccountDataclassNotes = "com.orvane.Dataclass.Notes";
const String kAccountDataclassMediaStream = "com.orvane.Dataclass.MediaStream";
const String kAccountDataclassDeviceLocator = "com.orvane.Dataclass.DeviceLocator";
const String kAccountDataclassContactsSearch = "com.orvane.Dataclass.ContactsSearch";
const String kAccountDataclassBackup = "com.orvane.Dataclass.Backup";
const String kAccountDataclassUbiquity = "com.orvane.Dataclass.Ubiquity";
const String kAccountDataclassKeyValue = "com.orvane.Dataclass.KeyValue";
const String kAccountDataclassPouchet = "com.orvane.Dataclass.Pouchet";
const String kAccountDataclassSharedStreams = "com.orvane.Dataclass.SharedStreams";

// Keys of an account record.
const String kAccountIdentifier = "Identifier";
const String kAccountSyncIdentifier = "Sync Identifier";
const String kAccountType = "Type";
const String kAccountClass = "Class";
const String kAccountDisplayName = "DisplayName";
const String kAccountEnabledDataclasses = "Enabled Dataclasses";
const String kAccountProvisionedDataclasses = "Provisioned Dataclasses";
const String kAccountSupportedDataclasses = "Supported Dataclasses";
const String kAccountUsername = "Username";
const String kAccountTypeString = "Type String";
const String kAccountShortTypeString = "Short Type String";
const String kAccountPreventRecentsSyncing = "Prevent Recents Syncing";
const String kCalendarsAccountSubscribedCalendars = "Subscribed Calendars";
const String kAccountCalendarsWereMigrated = "CalendarsWereMigrated";
const String kAccountChildAccounts = "ChildAccounts";

// Keys of an account type's entry in the catalogue.
const String kPropertiesSupportedDataclasses = "Supported Dataclasses";
const String kPropertiesEnableDataclassActions = "Enable Actions";
const String kPropertiesDisableDataclassActions = "Disable Actions";
const String kPropertiesDeleteAccountActions = "Delete Account Actions";
const String kPropertiesShowRemindersSeparately = "Show Reminders Separately";

// Keys of a dataclass's entry in the dataclass properties.
const String kDataclassSupportsMultipleStores = "Supports Multiple Stores";
const String kDataclassDisplaySwitch = "Display Dataclass Switch";
const String kDataclassRequiresUserConfirmation = "Requires User Confirmation";

// Toggle actions.
const String kDataclassToggleActionNone = "None";
const String kDataclassToggleActionKeepLocalData = "Keep Local Data";
const String kDataclassToggleActionMergeLocalData = "Merge Local Data";
const String kDataclassToggleActionDeleteLocalData = "Delete Local Data";
const String kDataclassToggleActionMergeSyncData = "Merge Sync Data";
const String kDataclassToggleActionDeleteSyncData = "Delete Sync Data";

// Delete actions.
const String kAccountDeleteActionMergeData = "Merge Data";
const String kAccountDeleteActionDeleteData = "Delete Data";

// Keys of a change record, as notifier classes receive it.
const String kTBChangeAccountChangeTypeKey = "ChangeType";
const String kTBChangeAccountIdentifierKey = "AccountID";
const String kTBChangeAccountTypeKey = "AccountType";
const String kTBChangeAccountOriginallyEnabledDataclassesKey = "OriginalDataclasses";

// The accounts file.
const String kAccountsFilename = "com.orvane.tallbook.plist";
const String kPlistVersionKey = "Version";
const String kPlistAccountsKey = "Accounts";

}  // namespace tallbook

const char* const kAccountMigrationLockFilename = "/tmp/AccountMigrationInProgress";
