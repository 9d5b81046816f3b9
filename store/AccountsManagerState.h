// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/AccountsManager.h"

#include "store/AccountPositions.h"
#include "store/AccountsFile.h"
#include "store/AccountsMerge.h"
#include "store/IdentifierTable.h"
#include "store/SavesOfMigration.h"
#include "store/TBRuntimeFixProtocol.h"
#include "store/WatchedAccounts.h"

namespace tallbook {

/// What a store holds, and the steps that its operations share. Not exported, as its outer class
/// is: it may become another with every release.
struct [[gnu::visibility("hidden")]] AccountsManager::State {
  using AccountTable = IdentifierTable<std::shared_ptr<BasicAccount>>;

  State();

  // Records

  void loadAccounts(const Array& infos);
  void appendAccount(std::shared_ptr<BasicAccount> account);
  void loadChildrenFromAccount(const std::shared_ptr<BasicAccount>& account);
  void fileChildren(const std::shared_ptr<BasicAccount>& account, const String& parentID);
  void removeChildrenForAccountWithIdentifier(std::string_view identifier);
  /// By the operations of the store whose state this is.
  void moveChild(AccountsManager & store, const std::shared_ptr<BasicAccount>& child,
                 const AccountTable& parents);
  /// Appends what cannot be fixed to `unfixable`.
  FixerVerdict offerToFixers(BasicAccount & account, std::string_view occasion,
                             std::vector<RecordFault> & unfixable);

  // Saving

  bool fixAccountsBeforeSaving();
  /// What the file is to hold, given what it holds; nullopt to leave it as it is.
  using MakeRecords = std::function<std::optional<std::vector<Value>>(const AccountsFile& file)>;
  bool replaceFile(KeepGeneration keep, const MakeRecords& makeRecords);
  void leaveOutOfWatchers(const ArrayRef& before, const ArrayRef& after);
  void finishSave(bool repaired, bool replaced);
  void rememberSavedRecords();
  std::vector<HeldRecord> heldRecords() const;
  std::vector<Value> mergedRecords(const AccountsFile& file) const;
  void setOriginalAccountDictionaries();
  void sendNotificationsForChangedAccounts();

  AccountTable topLevelAccountsByID;
  std::shared_ptr<AccountList> orderedTopLevelAccounts = std::make_shared<AccountList>();
  /// Where the records stand in the list; made when one is first replaced, and dropped when the
  /// list changes in another way than at its end.
  std::unique_ptr<AccountPositions> positions;
  AccountTable childAccountsByID;
  IdentifierTable<String> childAccountIDToParentAccountID;
  /// The reverse of the table above, in the order of "ChildAccounts": dropping one parent's
  /// children must not walk everybody's.
  IdentifierTable<std::vector<String>> childAccountIDsByParentAccountID;
  IdentifierTable<DictionaryRef> originalAccountsByID;
  std::uint64_t dataVersion = 0;
  AccountsFileState fileState;
  /// The records as they were last read from or written to the file, those deleted here since then
  /// included; frozen.
  std::vector<DictionaryRef> savedRecords;
  /// What watchers know of the accounts who are not to tell what this store changes.
  std::vector<std::weak_ptr<WatchedAccounts>> leftOutOf;
  SaveFailure saveFailure;
  std::string generationFailure;
  std::unique_ptr<SavesOfMigration> savesOfMigration;  ///< null for all other stores
  std::vector<RecordFault> droppedRecords;
  std::vector<RecordFault> unloadableRecords;
  std::vector<std::unique_ptr<TBRuntimeFixProtocol>> runtimeFixers;
};

}  // namespace tallbook
