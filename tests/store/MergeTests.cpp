// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Before the rapidcheck header, which needs it.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tallbook/InternalConsistencyFailure.h"

#include "tests/store/StoreDevice.h"

namespace tallbook {
namespace {

class ASave : public StoreDevice {};

void put(BasicAccount& account, const Value& value, const String& key) {
  account.setAccountPropertyForKey(value, key);
}

// Null stands for "no such key".
TEST_F(ASave, MergesEveryCaseOfAKeyThroughTheFile) {
  const Value none;
  const struct {
    Value original, inMemory, onDisk, expected;
  } rows[] = {
      {none, none, none, none}, {none, none, "d", "d"}, {none, "m", none, "m"},
      {none, "m", "d", "m"},    {"o", "o", "o", "o"},   {"o", "o", "d", "d"},
      {"o", "o", none, none},   {"o", "m", "o", "m"},   {"o", "m", "d", "m"},
      {"o", "m", none, "m"},    {"o", none, "o", none}, {"o", none, "d", none},
      {"o", none, none, none},
  };
  for (const auto& row : rows) {
    const DictionaryRef before = record("a", {{"witness", 1}});
    if (!row.original.isNull()) before->set("k", row.original);
    writeAccounts({before});
    const auto here = AccountsManager::init();
    const auto elsewhere = AccountsManager::init();
    put(*elsewhere->accountWithIdentifier("a"), row.onDisk, "k");
    ASSERT_TRUE(elsewhere->saveAllAccounts());
    put(*here->accountWithIdentifier("a"), row.inMemory, "k");
    ASSERT_TRUE(here->saveAllAccounts());
    EXPECT_EQ(stored("a")["k"], row.expected)
        << row.original.description() << " " << row.inMemory.description() << " "
        << row.onDisk.description();
    EXPECT_EQ(stored("a")["witness"], Value(1));
    EXPECT_EQ(here->accountWithIdentifier("a")->accountPropertyForKey("k"), row.inMemory);
  }
}

TEST_F(ASave, WritesTheRecordsOfItsOwnStoreInTheirOrder) {
  writeAccounts({record("a"), record("b"), record("c")});
  const auto here = AccountsManager::init();
  const auto elsewhere = AccountsManager::init();
  elsewhere->insertAccount(BasicAccount::initWithProperties(record("new elsewhere")));
  elsewhere->deleteAccountWithIdentifier("a");
  ASSERT_TRUE(elsewhere->saveAllAccounts());
  here->deleteAccountWithIdentifier("b");
  here->insertAccount(BasicAccount::initWithProperties(record("new here", {{"k", 1}})));
  ASSERT_TRUE(here->saveAllAccounts());
  EXPECT_EQ(order(*AccountsManager::init()), "a c new here");
  EXPECT_EQ(stored("new here")["k"], Value(1));
}

TEST_F(ASave, MergesAgainstWhatItsOwnStoreLoadedOrSaved) {
  writeAccounts({record("a", {{"k", "o"}})});
  const auto store = AccountsManager::init();
  const auto account = store->accountWithIdentifier("a");
  account->setAccountPropertyForKey("first", "k");
  // Neither a look at the file nor another store moves this store's idea of the original.
  AccountsManager::init()->accountWithIdentifier("a")->setDisplayName("never saved");
  EXPECT_FALSE(AccountsManager::tallbookNeedsToBeMigrated());
  ASSERT_TRUE(store->saveAllAccounts());
  const auto other = AccountsManager::init();
  other->accountWithIdentifier("a")->setAccountPropertyForKey("elsewhere", "k");
  ASSERT_TRUE(other->saveAllAccounts());
  account->setAccountPropertyForKey(1, "another");
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(stored("a")["k"], Value("elsewhere"));
  EXPECT_FALSE(stored("a")->contains("DisplayName"));
}

TEST_F(ASave, ReplacesValuesWhole) {
  writeAccounts({record("a", {{"list", Array::make({1})}})});
  const auto here = AccountsManager::init();
  const auto elsewhere = AccountsManager::init();
  elsewhere->accountWithIdentifier("a")->setAccountPropertyForKey(Array::make({1, 2}), "list");
  ASSERT_TRUE(elsewhere->saveAllAccounts());
  here->accountWithIdentifier("a")->setAccountPropertyForKey(Array::make({1, 3}), "list");
  ASSERT_TRUE(here->saveAllAccounts());
  EXPECT_EQ(stored("a")["list"], Value(Array::make({1, 3})));
}

// Those of one identifier are not merged with what is another's, even where the first of a pair
// made room for another account.
TEST_F(ASave, WritesRecordsOfOneIdentifierAsTheyAreHere) {
  const auto named = [](const String& identifier, const char* name) {
    return record(identifier, {{"DisplayName", name}});
  };
  const auto names = [this] {
    std::string text;
    const ArrayRef accounts = readAccounts();
    for (const Value& account : *accounts) {
      text += account.dictionary()["DisplayName"].string().str() + " ";
    }
    return text;
  };
  writeAccounts({named("a", "first"), named("b", "other"), named("a", "second")});
  const auto store = AccountsManager::init();
  writeAccounts({named("a", "new"), named("b", "other, elsewhere"), named("a", "second")});
  store->accountWithIdentifier("a")->setAccountPropertyForKey(1, "k");
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(names(), "first other, elsewhere second ");
  EXPECT_EQ(AccountsManager::init()->accountWithIdentifier("a")->accountPropertyForKey("k"),
            Value(1));
  // Twins on the disk alone
  writeAccounts({named("a", "third"), named("b", "other"), named("b", "another")});
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(names(), "first other second ");
}

TEST_F(ASave, TakesNoParentForTheRecordOfAChild) {
  const DictionaryRef child = record("c", {{"DisplayName", "child"}});
  writeAccounts({recordOfType("OrvaneAccount", "p", {{"ChildAccounts", Array::make({child})}})});
  const auto store = AccountsManager::init();
  store->insertAccount(BasicAccount::initWithProperties(child));
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(order(*AccountsManager::init()), "p c");
  EXPECT_EQ(Value(stored("c")), Value(child));
}

TEST_F(ASave, MergesNothingWithoutPropertiesInMemory) {
  const auto merge = &AccountsManager::mergeInMemoryPropertiesOriginalPropertiesOnDiskProperties;
  const DictionaryRef present = record("a");
  for (const DictionaryRef& other : {present, DictionaryRef()}) {
    EXPECT_THROW((void)merge(nullptr, other, other), InternalConsistencyFailure);
    EXPECT_EQ(merge(present, nullptr, other), present);
  }
}

// Each key of three states by each of three holders, all keys at once.
RC_GTEST_PROP(AnyThreeVersions, MergeKeyByKey, ()) {
  const DictionaryRef versions[3] = {Dictionary::make({{"always", 0}}),
                                     Dictionary::make({{"always", 0}}),
                                     Dictionary::make({{"always", 0}})};
  const auto& [original, inMemory, onDisk] = versions;
  const auto keys = *rc::gen::container<std::vector<std::string>>(rc::gen::string<std::string>());
  for (const std::string& key : keys) {
    for (const DictionaryRef& version : versions) {
      if (const int state = *rc::gen::inRange(0, 4)) version->set(key, Array::make({state}));
    }
  }
  const DictionaryRef merged =
      AccountsManager::mergeInMemoryPropertiesOriginalPropertiesOnDiskProperties(inMemory, original,
                                                                                 onDisk);
  for (const std::string& key : keys) {
    const Value* before = original->find(key);
    const Value* here = inMemory->find(key);
    const bool isChangedHere = before && here ? !(*before == *here) : before != here;
    const Value* wanted = isChangedHere ? here : onDisk->find(key);
    const Value* found = merged->find(key);
    RC_ASSERT((found != nullptr) == (wanted != nullptr));
    if (wanted) RC_ASSERT(*found == *wanted);
  }
}

}  // namespace
}  // namespace tallbook
