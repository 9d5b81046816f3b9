// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <optional>

#include "tests/migration/MigrationDevice.h"

namespace tallbook {
namespace {

struct Step {
  const char* name;
  bool (AccountsDataMigrator::*run)(const AccountsDataMigrator::Store& store);
  std::optional<std::uint64_t> dataVersion;  ///< none where the step leaves it as it is
  bool saves;
};

void PrintTo(const Step& step, std::ostream* out) {
  *out << step.name;
}

Value recordsOf(const AccountsManager& store) {
  const ArrayRef records = Array::make();
  const auto accounts = store.allBasicAccounts();
  for (const auto& account : *accounts) records->append(account->properties());
  return records;
}

std::vector<std::string> sortedTexts(const Value& list) {
  std::vector<std::string> texts;
  const ArrayRef array = list.array();
  for (const Value& text : *array) texts.push_back(text.string().str());
  std::sort(texts.begin(), texts.end());
  return texts;
}

/// The cases of `data/steps/NAME.plist`, each a device with "Before", "After", "Console" (in any
/// order) and "Cloud Tabs Notices".
class AStep : public MigrationDevice, public ::testing::WithParamInterface<Step> {};

TEST_P(AStep, ChangesTheAccountsThatItMustAndNoOthers) {
  const Step& step = GetParam();
  const ArrayRef cases = data(std::string("steps/") + step.name).array();
  ASSERT_FALSE(cases->empty());
  for (const Value& element : *cases) {
    const DictionaryRef each = element.dictionary();
    SCOPED_TRACE(each["Case"].description());
    arrange(element.dictionary());
    const auto store = AccountsManager::initWithAccounsInfoArray(each["Before"].array());
    ASSERT_EQ(store->count(), each["Before"].array()->size());
    store->setDataVersion(77);
    AccountsManager::_setShouldSkipNotifications(true);
    AccountsDataMigrator migrator;
    EXPECT_TRUE((migrator.*step.run)(store));
    AccountsManager::_setShouldSkipNotifications(false);

    EXPECT_TRUE(test::matches(each["After"], recordsOf(*store)));
    EXPECT_EQ(store->dataVersion(), step.dataVersion.value_or(77));
    EXPECT_EQ(test::exists(accountsPath()), step.saves);
    auto console = consoleLines();
    std::sort(console.begin(), console.end());
    EXPECT_EQ(console, sortedTexts(each["Console"]));
    EXPECT_EQ(platform().bookmarks.cloudTabsNotices, each["Cloud Tabs Notices"].integerValue());
  }
}

using Migrator = AccountsDataMigrator;
INSTANTIATE_TEST_SUITE_P(
    , AStep,
    ::testing::Values(Step{"7A149", &Migrator::_migrateAccountsFrom7A149, 1, false},
                      Step{"7A150", &Migrator::_migrateAccountsFrom7A150, 2, false},
                      Step{"7A153", &Migrator::_migrateAccountsFrom7A153, 3, false},
                      Step{"7A241", &Migrator::_migrateAccountsFrom7A241, 4, false},
                      Step{"7A242", &Migrator::_migrateAccountsFrom7A242, 5, false},
                      Step{"8A293", &Migrator::_migrateAccountsFrom8A293, 6, false},
                      Step{"8B117", &Migrator::_migrateAccountsFrom8B117, {}, true},
                      Step{"8C136", &Migrator::_migrateAccountsFrom8C136, {}, true},
                      Step{"8F191", &Migrator::_migrateAccountsFrom8F191, 9, true},
                      Step{"9A182", &Migrator::_migrateAccountsFrom9A182, 10, true},
                      Step{"9A334", &Migrator::_migrateAccountsFrom9A334, 11, true},
                      Step{"9B176", &Migrator::_migrateAccountsFrom9B176, 12, true}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(MigrationDevice, KnowsAProvidersCalDAVAccountByServerLoginAndPath) {
  const ArrayRef pairs = data("matching").array();
  ASSERT_FALSE(pairs->empty());
  for (const Value& element : *pairs) {
    const DictionaryRef each = element.dictionary();
    const auto umbrella = BasicAccount::accountWithProperties(each["Umbrella"].dictionary());
    const auto calDAV = BasicAccount::accountWithProperties(each["CalDAV"].dictionary());
    EXPECT_EQ(Migrator::_calDAVAccountMatchesUmbrellaAccount(calDAV, umbrella),
              each["Belongs"].boolValue())
        << element.description();
  }
}

TEST_F(MigrationDevice, EscapesUserNamesForPaths) {
  for (const auto& [username, escaped] : {
           std::pair{"AZaz09-_.!~*'();:&=+$,", "AZaz09-_.!~*'();:&=+$,"},
           std::pair{"a@b/c?d", "a%40b%2Fc%3Fd"},
           std::pair{" \"#%<>[\\]^`{|}\x7f\n", "%20%22%23%25%3C%3E%5B%5C%5D%5E%60%7B%7C%7D%7F%0A"},
           std::pair{"\u00e9\u20ac", "%C3%A9%E2%82%AC"},
       }) {
    EXPECT_EQ(Migrator::_urlSafeUsername(username), escaped);
  }
}

}  // namespace
}  // namespace tallbook
