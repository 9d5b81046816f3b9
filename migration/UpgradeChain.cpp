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
  using Step = bool (AccountsDataMigrator::*)(const Store&);
  using Self = AccountsDataMigrator;
  // A file of version N enters at the N-th step; every later one runs after it.
  static constexpr std::array<Step, 12> kSteps = {
      &Self::_migrateAccountsFrom7A149, &Self::_migrateAccountsFrom7A150,
      &Self::_migrateAccountsFrom7A153, &Self::_migrateAccountsFrom7A241,
      &Self::_migrateAccountsFrom7A242, &Self::_migrateAccountsFrom8A293,
      &Self::_migrateAccountsFrom8B117, &Self::_migrateAccountsFrom8C136,
      &Self::_migrateAccountsFrom8F191, &Self::_migrateAccountsFrom9A182,
      &Self::_migrateAccountsFrom9A334, &Self::_migrateAccountsFrom9B176,
  };
  const AccountsFile accounts = AccountsFile::read();
  // A file that cannot be read now has a version all the same.
  if (accounts.state().kind == AccountsFileState::Kind::Unreadable) return false;
  const DictionaryRef& file = accounts.content();
  collate("OldTallbook", file);
  // Without sign, so that a negative version counts as newer than every step.
  const std::uint64_t savedVersion = file ? (*file)[kPlistVersionKey].unsignedValue() : 0;
  if (savedVersion >= AccountsManager::currentVersion()) return true;
  if (savedVersion >= kSteps.size()) return false;
  for (std::size_t version = savedVersion; version < kSteps.size(); ++version) {
    if (!(this->*kSteps[version])(store)) return false;
  }
  return true;
}

}  // namespace tallbook
