// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/migration/MigrationDevice.h"

namespace tallbook {
namespace {

/// The device of `data/chain/NAME.before.plist` becomes that of `NAME.after.plist`.
class AChain : public MigrationDevice, public ::testing::WithParamInterface<const char*> {
 protected:
  DictionaryRef description(const char* moment) {
    return data(std::string("chain/") + GetParam() + "." + moment).dictionary();
  }
};

TEST_P(AChain, BringsTheDeviceToItsEndAndChangesNothingWhenRunAgain) {
  const DictionaryRef before = description("before");
  const DictionaryRef after = description("after");
  arrange(before);
  const bool hadAccounts = test::exists(accountsPath());
  const std::string accounts = hadAccounts ? test::readFile(accountsPath()) : "";
  EXPECT_TRUE(migrate());
  EXPECT_EQ(generations(), hadAccounts ? std::vector{accounts} : std::vector<std::string>())
      << "what was there before, and nothing of what came on the way";
  EXPECT_EQ(readAccountsFile().dictionary()["Version"], Value(12));
  EXPECT_TRUE(test::matches((*after)["Accounts"], readAccounts()));
  EXPECT_EQ(platform().bookmarks.cloudTabsNotices, (*after)["Cloud Tabs Notices"].integerValue());
  EXPECT_FALSE(test::exists(legacyMailPath()));
  EXPECT_FALSE(test::exists(legacySyncoraPath()));

  const std::string migrated = test::readFile(accountsPath());
  restart();
  tellFacts(before);
  EXPECT_TRUE(migrate());
  EXPECT_EQ(test::readFile(accountsPath()), migrated);
  EXPECT_EQ(consoleLines(), std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(, AChain,
                         ::testing::Values("from-nothing", "from-no-version", "from-negative",
                                           "from-00", "from-01", "from-02", "from-03", "from-04",
                                           "from-05", "from-06", "from-07", "from-08", "from-09",
                                           "from-10", "from-11", "from-12", "legacy-alone",
                                           "legacy-and-03", "legacy-and-12", "legacy-no-version",
                                           "legacy-wrong-kinds"),
                         [](const auto& tested) {
                           std::string name = tested.param;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace tallbook
