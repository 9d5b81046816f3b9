// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <array>
#include <cstdint>
#include <system_error>

#include "tallbook/Vocabulary.h"

#include "migration/AccountsDataMigrator.h"
#include "platform/Platform.h"
#include "store/AccountsFile.h"

namespace tallbook {

bool AccountsDataMigrator::_newAccountsInformationPresent() const {
  std::error_code unknown;
  const bool isThere =
      Platform::current().fileSystem().exists(AccountsManager::fullPathToTallbookPlist(), unknown);
  // A file that cannot be looked at is not taken for none.
  return isThere || unknown;
}

bool AccountsDataMigrator::_migrateNewAccountsInfo(const Store& store) {
  using Self = AccountsDataMigrator;
  struct Step {
    const char* name;
    bool (AccountsDataMigrator::*run)(const Store&);
  };
  // A file of version N enters at the N-th step; every later one runs after it.
  static constexpr std::array<Step, 12> kSteps = {{
      {"7A149", &Self::_migrateAccountsFrom7A149},
      {"7A150", &Self::_migrateAccountsFrom7A150},
      {"7A153", &Self::_migrateAccountsFrom7A153},
      {"7A241", &Self::_migrateAccountsFrom7A241},
      {"7A242", &Self::_migrateAccountsFrom7A242},
      {"8A293", &Self::_migrateAccountsFrom8A293},
      {"8B117", &Self::_migrateAccountsFrom8B117},
      {"8C136", &Self::_migrateAccountsFrom8C136},
      {"8F191", &Self::_migrateAccountsFrom8F191},
      {"9A182", &Self::_migrateAccountsFrom9A182},
      {"9A334", &Self::_migrateAccountsFrom9A334},
      {"9B176", &Self::_migrateAccountsFrom9B176},
  }};
  const AccountsFile accounts = AccountsFile::read();
  // A file that cannot be read now has a version all the same.
  _whyUnreadable = accounts.state().error;
  if (_whyUnreadable) return false;
  const DictionaryRef& file = accounts.content();
  collate("OldTallbook", file);
  // Without sign, so that a negative version counts as newer than every step.
  const std::uint64_t savedVersion = file ? (*file)[kPlistVersionKey].unsignedValue() : 0;
  if (savedVersion >= AccountsManager::currentVersion()) return true;
  if (savedVersion >= kSteps.size()) return false;
  for (std::size_t version = savedVersion; version < kSteps.size(); ++version) {
    const auto& [name, run] = kSteps[version];
    if (!(this->*run)(store)) return false;
    endStage(name, store);
  }
  return true;
}

}  // namespace tallbook
