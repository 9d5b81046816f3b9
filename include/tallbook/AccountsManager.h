// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/AccountsFileContents.h"
#include "tallbook/BasicAccount.h"
#include "tallbook/Export.h"
#include "tallbook/SaveReceipt.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

/// @file
/// The store of account records.

/// The accounts of a device: records and the store that keeps them, values and their encodings,
/// what hears of changes, and the migration of what earlier releases kept.
namespace tallbook {

class LockHold;

/// A record that no store can hold.
struct RecordFault {
  Value record;     ///< what stands in its place in "Accounts", of whatever kind
  std::string why;  ///< on one line
};

/// The store of account records: reads the accounts file when it is made, answers look-ups, takes
/// changes, and on `saveAllAccounts` merges them with what others wrote meanwhile.
///
/// A store is made for one task, and is thread-bound together with the records that it hands out;
/// stores are independent of each other, and class operations are thread-safe. Those records are
/// shared with it: a change made through one is saved with the store.
///
/// The operations that make a store never answer null; they throw InternalConsistencyFailure where
/// there are records and the account type catalogue cannot be read. Changes are made in memory
/// only, until the store is saved; one by a null record changes nothing.
class TALLBOOK_EXPORT AccountsManager {
 public:
  /// Records in an order that the operation tells. As a parameter it may hold null, which counts as
  /// no record.
  using AccountList = std::vector<std::shared_ptr<BasicAccount>>;
  /// Account types to look for, such as `kMailAccountType`; nothing is of an unknown one.
  using AccountTypes = std::vector<String>;

  // Creation

  /// A store of the accounts file's records; empty for a file that is missing, no accounts file or
  /// unreadable, which `fileState` tells apart.
  [[nodiscard]] static std::shared_ptr<AccountsManager> init();
  /// The same for a migration, which rewrites the file several times: of these versions none is
  /// kept as a generation, and each that the store did not write itself is.
  [[nodiscard]] static std::shared_ptr<AccountsManager> initInsideOfMigration();
  /// The same store of what `readAccountsFile` gave, for a client that looks at the file itself too
  /// and must not see another one.
  [[nodiscard]] static std::shared_ptr<AccountsManager> initWithAccountsFile(
      const AccountsFileContents& file);
  /// A store of the given record dictionaries; null counts as none. What is no record is left out,
  /// as `droppedRecords` tells. The underscored one is the same under its internal name.
  /// @{
  [[nodiscard]] static std::shared_ptr<AccountsManager> initWithAccounsInfoArray(
      const ArrayRef& infos);
  [[nodiscard]] static std::shared_ptr<AccountsManager> _initWithAccountsInfo(
      const ArrayRef& infos);
  /// @}

  ~AccountsManager();
  AccountsManager(const AccountsManager&) = delete;
  AccountsManager& operator=(const AccountsManager&) = delete;

  // The accounts file

  /// The format version that this library writes: 12.
  static std::uint64_t currentVersion() noexcept;
  /// Where the accounts file lies, or would lie, below the process's root.
  static std::string fullPathToTallbookPlist();
  /// What lies there now, read once. For one that cannot be read the state says why.
  [[nodiscard]] static AccountsFileContents readAccountsFile();
  /// The same without its content.
  [[nodiscard]] static AccountsFileState stateOfAccountsFile();
  /// What lay there when the store was made; `Missing` for a store that was not made of the file.
  const AccountsFileState& fileState() const noexcept;
  /// The file's version as it was read, 0 where there was none; the upgrade of an older file
  /// raises it. Saving never writes it.
  /// @{
  std::uint64_t dataVersion() const noexcept;
  void setDataVersion(std::uint64_t version) noexcept;
  /// @}

  /// What the file holds and loading left out when the store was made.
  const std::vector<RecordFault>& droppedRecords() const noexcept;
  /// What the last save wrote although no load accepts it: the records' own, live dictionaries.
  const std::vector<RecordFault>& unloadableRecords() const noexcept;

  // Look-up

  /// The top-level record with that identifier; for a child's identifier, the child's top-level
  /// parent; null for an identifier that nobody has.
  [[nodiscard]] std::shared_ptr<BasicAccount> accountWithIdentifier(
      std::string_view identifier) const;
  /// The top-level record of the record whose sync store identifier this is; null when nobody's.
  [[nodiscard]] std::shared_ptr<BasicAccount> displayAccountWithSyncIdentifier(
      std::string_view syncIdentifier) const;
  /// The first record, top-level ones before children, whose sync store identifier this is.
  [[nodiscard]] std::shared_ptr<BasicAccount> syncableAccountWithSyncIdentifier(
      std::string_view syncIdentifier) const;
  /// The live list of top-level records. Replacing operations install another list; do not change
  /// the store while iterating over this one.
  std::shared_ptr<const AccountList> allBasicAccounts() const;
  /// All top-level records in store order, then all indexed child records in the order in which
  /// they were filed: that of their parents, until a parent is changed.
  [[nodiscard]] AccountList allBasicSyncableAccounts() const;
  /// The top-level records of any of the types, in store order, or their number; children are not
  /// among them.
  /// @{
  [[nodiscard]] AccountList basicAccountsWithTypes(const AccountTypes& types) const;
  std::uint64_t countOfBasicAccountsWithTypes(const AccountTypes& types) const;
  /// @}
  /// Number of top-level records.
  std::uint64_t count() const noexcept;

  // Full accounts. A change made through one is not saved; see `fullAccountUsingLoader`.

  /// The full account of the top-level or child record with that identifier; null for an unknown
  /// or empty one. The loader may be null. Throws as `BasicAccount::fullAccountUsingLoader`.
  [[nodiscard]] std::shared_ptr<BasicAccount> fullAccountWithIdentifierLoader(
      std::string_view identifier, AccountLoader* loader) const;
  /// Full accounts of the records of any of the types, each top-level record followed by its
  /// children of such a type. Without a loader the modules of the creators information are loaded.
  /// Throws as `fullAccountWithIdentifierLoader`, and hands out none then.
  /// @{
  [[nodiscard]] AccountList accountsWithTypesWithLoader(const AccountTypes& types,
                                                        AccountLoader* loader) const;
  [[nodiscard]] AccountList accountsWithTypes(const AccountTypes& types) const;
  /// @}
  /// `accountsWithTypes` for incoming mail: the types Mail, Veltro, Gmail and Yahoo.
  [[nodiscard]] AccountList allMailAccounts() const;
  /// The on-device account; its record is made, not saved, when the store has none. Throws as
  /// `fullAccountWithIdentifierLoader`.
  [[nodiscard]] std::shared_ptr<BasicAccount> fullDeviceLocalAccount();

  // Changes

  /// Puts the record in place of the stored one with its identifier; nothing when there is none.
  ///
  /// A record is saved where it differs from what it was made of. Of a newly made one, with the
  /// values that a client would like to see stored, the next save therefore keeps the *file's*:
  /// only what is set after the record was made counts as changed. Change the record that the store
  /// hands out instead, and call this when its "ChildAccounts" changed, or set the values on the
  /// new one.
  ///
  /// A full account has a copy of its record's properties: what is changed through it is not saved.
  /// Given to this operation it takes the record's place like any newly made record: what was
  /// changed on it since it was made is saved, and what was changed on the record it was made of is
  /// not.
  void updateAccount(const std::shared_ptr<BasicAccount>& account);
  /// Appends the record unless its identifier is taken.
  void insertAccount(const std::shared_ptr<BasicAccount>& account);
  /// Removes the top-level record with the record's identifier, and its children.
  void deleteAccount(const std::shared_ptr<BasicAccount>& account);
  /// `deleteAccount` for each of them, in one walk over the store.
  void deleteAccounts(const AccountList& accounts);
  /// `deleteAccount` for the top-level record that look-ups find under the identifier; nothing for
  /// a child's.
  void deleteAccountWithIdentifier(std::string_view identifier);
  /// Puts the new record at the stored one's place, the first where that object is stored several
  /// times; nothing when it is not stored.
  void replaceAccountWithAccount(const std::shared_ptr<BasicAccount>& account,
                                 const std::shared_ptr<BasicAccount>& withAccount);
  /// Installs the given records, children included, as all records of the types. A given record is
  /// a child when its parent has an identifier.
  void replaceAccountsWithTypesWithAccounts(const AccountTypes& types, const AccountList& accounts);
  /// Removes the child's dictionary from the parent's "ChildAccounts".
  void removeChildWithIdentifierFromAccount(std::string_view identifier,
                                            const std::shared_ptr<BasicAccount>& account);
  /// Appends the child's own dictionary, shared, to the parent's "ChildAccounts".
  void addChildToAccount(const std::shared_ptr<BasicAccount>& child,
                         const std::shared_ptr<BasicAccount>& account);
  /// Makes what was changed of a record part of the store, of a child too: it is written as part of
  /// its parent. The children of a top-level record are those of its "ChildAccounts" from then on.
  void takeUpChangesOfAccount(const std::shared_ptr<BasicAccount>& account);
  /// Why the next load would drop a top-level record with these properties, on one line; else
  /// empty.
  static std::string whyNotLoaded(const DictionaryRef& properties);
  /// The same, and why this store has no room for it: a device has one on-device account.
  std::string whyNotInsertable(const DictionaryRef& properties) const;

  // Accounts as a text, a server or a profile wants them

  /// What became of a list that was applied.
  struct Applied {
    std::string problem;      ///< on one line, the place and why; the store is not to be saved then
    std::size_t staying = 0;  ///< how many could not be removed: no load finds them again
  };
  /// Gives the store's accounts the keys and values, children included, of those in the list with
  /// their identifiers, and adds the others. Accounts that the list lacks stay, or with `prune` go.
  /// Those that the file of which the store was made holds just as they are wanted need nothing,
  /// not even an identifier. Applying a list again changes nothing.
  [[nodiscard]] Applied applyAccounts(const ArrayRef& wanted, const AccountsFileContents& file,
                                      bool prune);
  /// Gives a record of the store, or a child, these keys and values, and no others. Why they cannot
  /// be had, on one line, as for another "Identifier" or "Type"; the record is as it was then. Else
  /// empty.
  [[nodiscard]] std::string applyToAccount(const DictionaryRef& wanted,
                                           const std::shared_ptr<BasicAccount>& account);

  // Saving

  /// Merges every record with the accounts file as it is now, replaces the file, and tells the
  /// notifier classes. True when the file was replaced; false leaves it as it was, and a later
  /// save loses nothing. Throws InternalConsistencyFailure, after the file was replaced, when a
  /// notifier class cannot be found or loaded.
  ///
  /// What other processes save at the same time is merged as well, however often that takes. A file
  /// that could not be read, now or when the store was made, is not replaced.
  ///
  /// Every save writes the whole dictionary of every account, names and hosts included, to the
  /// library log, which is the system's journal unless `HostOptions::log` says otherwise.
  [[nodiscard]] bool saveAllAccounts();
  /// When the file that a save replaces is kept as a generation (`AccountsHistory`). With
  /// `AtMostOnceAMinute`, as by `saveAllAccounts`, it is by the first of a burst of saves, so that
  /// a busy program does not push out what was before.
  enum class KeepGeneration { AtMostOnceAMinute, Always };
  /// Writes what this store changed since it last read or wrote the file, and keeps what others
  /// changed, whole accounts included: theirs stay, and those that they deleted stay deleted. Of
  /// what both changed, this store's is written and the receipt names the clash. Lists of
  /// dataclasses and children are merged member by member. Nothing is written where the file is as
  /// it should be already. Notifies and throws as `saveAllAccounts`; the store itself goes on with
  /// what it had.
  [[nodiscard]] SaveReceipt saveChanges(KeepGeneration keep = KeepGeneration::AtMostOnceAMinute);
  /// What a person is to know of a clash of this store's last save, on one line: the account, what
  /// of it, and both values, shortened.
  std::string textOfClash(const SaveClash& clash) const;
  /// Why the last save failed; false-like where it did not.
  const SaveFailure& saveFailure() const noexcept;
  /// The three-way merge of one record: keys changed here win, keys changed only on disk survive,
  /// keys removed here are gone. `inMemory` itself when either of the others is null or empty.
  /// Throws InternalConsistencyFailure when `inMemory` is null.
  static DictionaryRef mergeInMemoryPropertiesOriginalPropertiesOnDiskProperties(
      const DictionaryRef& inMemory, const DictionaryRef& original, const DictionaryRef& onDisk);

  // Notifications

  /// Tell the notifier classes of the record's type and the dataclass that it is about to be, or
  /// was, switched; nobody hears of a null record. Throw as
  /// `_notifierClassNamesForAccountTypeDataclass`, and for a missing class.
  /// @{
  static void accountWillChangeForDataclass(const std::shared_ptr<BasicAccount>& account,
                                            const String& dataclass);
  static void accountDidChangeForDataclass(const std::shared_ptr<BasicAccount>& account,
                                           const String& dataclass);
  /// @}
  /// Localised title of the group of subscribed calendars; null for every other type.
  static String displayNameForGroupOfAccountTypeForBeginningOfSentence(std::string_view accountType,
                                                                       bool forBeginning);

  // MigrationSupport

  /// Waits until no other process migrates and holds the migration lock; null when it cannot be
  /// made. The hold ends by `releaseMigrationLock`, with the last of its owners, or with the
  /// process.
  [[nodiscard]] static std::shared_ptr<LockHold> createAndLockMigrationLock();
  /// Unlocks the lock, whoever else shares it. Null is allowed.
  static void releaseMigrationLock(const std::shared_ptr<LockHold>& lock);
  /// Hears of whoever holds the migration lock, as "process 4711 (name of its program)".
  using LongWait = std::function<void(std::string_view holder)>;
  /// Blocks while a migration runs. False, at once, when the lock cannot be made: whether one runs
  /// cannot be told then. After a second of waiting `longWait` is called, once, on this thread.
  /// False as well where a migration still runs after the time-out.
  static bool waitForMigrationToFinish(const LongWait& longWait = {},
                                       std::optional<std::chrono::milliseconds> timeout = {});
  /// Whether the accounts file's version is older than `currentVersion`.
  [[nodiscard]] static bool tallbookNeedsToBeMigrated();
  /// Sets which migration work is needed: whether there are legacy files of either kind, and where
  /// there are none, `tallbookNeedsToBeMigrated`. Throws InternalConsistencyFailure for a null
  /// pointer.
  static void shouldMigrateOldMailAccountsOldSyncoraAccountsNewTallbook(bool* oldMailAccounts,
                                                                        bool* oldSyncoraAccounts,
                                                                        bool* newTallbook);
  /// Deletes the accounts file. That it cannot be deleted is only logged.
  static void removeNewTallbookToMigrateOldAccountInformation();
  /// Whether the legacy file of mail, or of Exchange accounts, is there. False, with a log line,
  /// where nobody can tell.
  /// @{
  static bool _oldMailAccountsInformationFound();
  static bool _oldSyncoraAccountsInformationFound();
  /// @}

  // Internal: for the migration, and for whoever stands in for the store in telling notifiers.

  /// Keeps the accounts file of which a migration's store was made as a generation of its own, if
  /// there is one. What could not be done, on one line; else empty. Only for a store that
  /// `initInsideOfMigration` made.
  std::string _keepGenerationBeforeMigration();
  /// The records as the last save of a migration's store wrote them, merged with what the file had,
  /// in the order of `allBasicAccounts`; none for other stores.
  std::vector<Value> _recordsAsSaved() const;
  /// Class names of the notifiers of a type and dataclass, their modules loaded. Throws
  /// InternalConsistencyFailure for malformed creators information and a module that cannot be
  /// loaded.
  static std::vector<String> _notifierClassNamesForAccountTypeDataclass(const String& accountType,
                                                                        std::string_view dataclass);
  /// Process-wide: whether saves notify nobody.
  static void _setShouldSkipNotifications(bool skip) noexcept;
  /// Change records for each notifier class, in the order in which the classes were first met.
  using NotificationBatch = std::vector<std::pair<String, ArrayRef>>;
  /// Adds the change record of one account to the records of each notifier class that serves its
  /// type and a dataclass which the change concerns. `changeType` is a value of
  /// `kTBChangeAccountChangeTypeKey`; `original` is null for an added account, `current` for a
  /// removed one. Throws as `_notifierClassNamesForAccountTypeDataclass`.
  static void _addNotificationToDictionaryForChangeTypeOriginalPropertiesCurrentProperties(
      NotificationBatch& batch, std::int32_t changeType, const DictionaryRef& original,
      const DictionaryRef& current);
  /// Tells the notifier classes how the top-level records differ from those that they were last
  /// told of. Saves do it, and count them as told; by itself this leaves them to be told again.
  /// Throws InternalConsistencyFailure for a notifier class that cannot be found or loaded, or that
  /// hears of no changes.
  void _sendNotificationsForChangedAccounts();

 private:
  friend class AccountsWatcher;
  struct State;

  TALLBOOK_INTERNAL AccountsManager();

  const std::unique_ptr<State> _state;
};

}  // namespace tallbook

/// Paths of the accounts file and of the legacy files, of mail and of Exchange accounts. The text
/// belongs to the library and stays valid until the same thread calls the same function again.
/// @{
extern "C" TALLBOOK_EXPORT const char* tallbookAccountsPath();
extern "C" TALLBOOK_EXPORT const char* mailAccountsPath();
extern "C" TALLBOOK_EXPORT const char* syncoraAccountPath();
/// @}

/// Called for every converted record of the class "MailAccount"; reports nothing.
extern "C" TALLBOOK_EXPORT void reportMailAccountClassFound(const tallbook::Dictionary* properties,
                                                            const char* context);
