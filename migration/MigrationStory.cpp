// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <unordered_set>
#include <utility>

#include "migration/AccountsDataMigrator.h"

/// What a migration tells its observer.
namespace tallbook {

void AccountsDataMigrator::tellLoading(const Store& store) {
  if (!_observer) return;
  for (const auto& [record, why] : store->droppedRecords()) _observer->accountLeft(record, why);
  endStage("accounts file", store);
}

void AccountsDataMigrator::saveStep(AccountsManager& store) {
  _isSaved = store.saveAllAccounts();
}

void AccountsDataMigrator::endStage(const char* name, const Store& store) {
  const bool isSaved = std::exchange(_isSaved, false);
  if (_observer) _observer->stageEnded({name, *store, isSaved});
}

void AccountsDataMigrator::replaceAccounts(const Store& store,
                                           const AccountsManager::AccountTypes& types,
                                           const AccountsManager::AccountList& accounts,
                                           const char* whyReplaced, const char* whyMet) {
  // The store installs another list, so that this one stays what it is.
  const auto before = store->allBasicAccounts();
  store->replaceAccountsWithTypesWithAccounts(types, accounts);
  if (!_observer) return;
  const auto after = store->allBasicAccounts();
  std::unordered_set<const BasicAccount*> stored;
  for (const Account& account : *after) stored.insert(account.get());
  for (const Account& account : *before) {
    if (stored.contains(account.get())) continue;
    const String identifier = account->identifier();
    const Account met = store->accountWithIdentifier(identifier);
    const bool isMet = met && met->identifier() == identifier;
    _observer->accountLeft(account->properties(), isMet ? whyMet : whyReplaced);
  }
}

void AccountsDataMigrator::tellNotConverted(const LegacyFile& file, std::string_view key,
                                            const MakeProperties& properties) {
  if (!_observer) return;
  const ArrayRef descriptions = file.descriptions(key);
  for (const Value& description : *descriptions) {
    const DictionaryRef made = properties(description.dictionary());
    const Value record = made ? Value(made) : description;
    const std::string why = BasicAccount::whyNoRecord(record);
    _observer->descriptionNotConverted(
        record, why.empty() ? "another account of its file cannot be converted" : why);
  }
}

void AccountsDataMigrator::tellEnd(const std::string& path, LegacyFileEnd::Kind kind,
                                   const std::string& why, const std::string& movedTo) {
  if (_observer) _observer->legacyFileEnded({path, kind, why, movedTo});
}

void AccountsDataMigrator::tellBothKept(const std::string& why) {
  for (const auto& [file, path] : {std::pair(&_oldMailFile, mailAccountsPath()),
                                   std::pair(&_oldSyncoraFile, syncoraAccountPath())}) {
    const bool isAbsent = file->fate == OldFile::Fate::Absent && file->why.empty();
    if (!isAbsent) tellEnd(path, LegacyFileEnd::Kind::Kept, file->why.empty() ? why : file->why);
  }
}

}  // namespace tallbook
