// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <limits>

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Vocabulary.h"

#include "tests/store/StoreDevice.h"

namespace tallbook {
namespace {

class AStore : public StoreDevice {};

TEST_F(AStore, IsEmptyWithoutAnAccountsFile) {
  const std::string hostile[] = {"", "bplist00", "<plist><array/></plist>", "no property list"};
  for (const std::string& bytes : hostile) {
    test::writeFile(accountsPath(), bytes);
    const auto store = AccountsManager::init();
    EXPECT_EQ(store->count(), 0u);
    EXPECT_EQ(store->dataVersion(), 0u);
  }
}

TEST_F(AStore, KeepsWhatItCanLoadInFileOrder) {
  writeAccountsFile(Dictionary::make(
      {{"Accounts",
        Array::make({record("a"), "no record", Dictionary::make({{"Type", 7}, {"Class", "C"}}),
                     record("b", {{"ChildAccounts", "no children"},
                                  {"Enabled Dataclasses", Array::make({1, 2})},
                                  {"DisplayName", 5}}),
                     recordOfType("No such type", "x"), record("a", {{"DisplayName", "later"}})})},
       {"Version", 7}}));
  const auto store = AccountsManager::init();
  EXPECT_EQ(order(*store), "a b a");
  EXPECT_EQ(store->dataVersion(), 7u);
  EXPECT_EQ(store->accountWithIdentifier("a")->displayName(), "later");
  EXPECT_FALSE(store->accountWithIdentifier("b")->displayName());
  EXPECT_TRUE(store->accountWithIdentifier("b")->enabledDataclasses()->empty());
  EXPECT_FALSE(store->accountWithIdentifier("x"));
  EXPECT_TRUE(logContains("-[AccountsManager(Internal) _initWithAccountsInfo:] ("));
  EXPECT_TRUE(logContains("\"ERROR: Failed to create a BasicAccount from \"no record\"\""));
  EXPECT_TRUE(logContains("Invalid account type: No such type"));
}

TEST_F(AStore, FindsChildrenThroughTheirParents) {
  writeAccounts(
      {recordOfType(kOrvaneAccountType, "p",
                    {{"Sync Identifier", "sp"},
                     {"ChildAccounts", Array::make({record("c1", {{"Sync Identifier", "s1"}}),
                                                    Dictionary::make({{"Type", "Mail"}}), 3,
                                                    recordOfType(kCalDAVAccountType, "c2")})}}),
       record("other")});
  const auto store = AccountsManager::init();
  const auto parent = store->accountWithIdentifier("p");
  EXPECT_EQ(store->count(), 2u);
  EXPECT_EQ(store->accountWithIdentifier("c1"), parent);
  EXPECT_EQ(store->displayAccountWithSyncIdentifier("s1"), parent);
  EXPECT_EQ(store->syncableAccountWithSyncIdentifier("s1")->identifier(), "c1");
  // A child without a sync identifier of its own shows its parent's; the parent comes first.
  EXPECT_EQ(store->syncableAccountWithSyncIdentifier("sp"), parent);
  std::string all;
  for (const auto& account : store->allBasicSyncableAccounts()) all += account->identifier().str();
  EXPECT_EQ(all, "potherc1c2");
  EXPECT_EQ(store->basicAccountsWithTypes({kMailAccountType, kCalDAVAccountType}).size(), 1u);
  EXPECT_EQ(store->countOfBasicAccountsWithTypes({kOrvaneAccountType}), 1u);
  EXPECT_TRUE(logContains("Ignoring unknown child account with properties 3"));

  parent->setAccountPropertyForKey("changed", "DisplayName");
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(stored("p")["ChildAccounts"].array()->size(), 4u) << "unknown children are kept";
}

TEST_F(AStore, WritesBackUntouchedWhatNobodyUnderstands) {
  const DictionaryRef exotic =
      record("a", {{"year 1", Date{-63113904000}},
                   {"year 4001", Date{63113904000.25}},
                   {"lowest", std::numeric_limits<std::int64_t>::min()},
                   {"highest", std::numeric_limits<std::uint64_t>::max()},
                   {"nul", std::string_view("a\0b", 3)},
                   {"beyond the basic plane", "\U0001F600"},
                   {"not a number", std::bit_cast<double>(0x7ff4000000000123u)},
                   {"negative zero", -0.0},
                   {"uid", UID{std::numeric_limits<std::uint64_t>::max()}},
                   {"null", Value()},
                   {"Sync Identifier", 9},
                   {"Enabled Dataclasses", Dictionary::make({{"odd", Data("x")}})}});
  writeAccountsFile(Dictionary::make(
      {{"Accounts",
        Array::make(
            {exotic, record("b"),
             Dictionary::make({{"Type", "Mail"}, {"Class", "IMAPAccount"}, {"Identifier", 5}})})},
       {"Version", 3},
       {"Extra", true}}));
  const auto store = AccountsManager::init();
  store->accountWithIdentifier("b")->setDisplayName("B");
  store->setDataVersion(9);
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(Value(stored("a")), Value(exotic));
  EXPECT_EQ(readAccounts()[2].dictionary()["Identifier"], Value(5));
  EXPECT_EQ(test::readFile(accountsPath()).substr(0, 8), "bplist00");
  const DictionaryRef file = readAccountsFile().dictionary();
  EXPECT_EQ((*file)["Version"], Value(12));
  EXPECT_EQ(file->size(), 2u);
}

}  // namespace
}  // namespace tallbook
