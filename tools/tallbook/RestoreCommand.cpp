// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsHistory.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"

namespace tallbook::tool {
namespace {

DictionaryRef contentToRestore(const Options& options) {
  const std::string& name = options.generation;
  const AccountsHistory::Content content = AccountsHistory::content(name);
  if (!content.accountsFile) {
    throw Failure(ExitCode::NotFound, "\"" + name + "\": " + content.problem +
                                          "; \"tallbook history\" lists the generations");
  }
  AccountsFile file;
  file.topLevel = content.accountsFile;
  file.path = name;
  requireNoUpgradeAhead(file, options);
  return file.topLevel;
}

AccountsManager::AccountList recordsOf(const Dictionary& accountsFile) {
  AccountsManager::AccountList records;
  std::size_t unknown = 0;
  for (const Value& element : accountsFile[kPlistAccountsKey].array()) {
    const DictionaryRef properties = element.dictionary();
    auto record = properties ? BasicAccount::initWithProperties(properties) : nullptr;
    if (record) {
      records.push_back(std::move(record));
    } else {
      ++unknown;
    }
  }
  if (unknown > 0) {
    note(std::to_string(unknown) + " of its records cannot be loaded and are not put back");
  }
  return records;
}

}  // namespace

ExitCode restore(const Options& options) {
  const DictionaryRef wanted = contentToRestore(options);
  const EditableStore store(options);
  const DictionaryRef before = store.accounts();
  AccountsManager::AccountTypes types;
  for (const auto& account : *store->allBasicAccounts()) types.push_back(account->type());
  store->replaceAccountsWithTypesWithAccounts(types, recordsOf(*wanted));
  store.showAndSave(options, before);
  return ExitCode::Done;
}

}  // namespace tallbook::tool
