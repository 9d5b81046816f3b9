// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Vocabulary.h"

#include "tests/store/StoreDevice.h"

namespace tallbook {
namespace {

using Accounts = AccountsManager::AccountList;

std::shared_ptr<BasicAccount> made(const DictionaryRef& properties) {
  return BasicAccount::initWithProperties(properties);
}

class AChangedStore : public StoreDevice {
 protected:
  std::shared_ptr<AccountsManager> store = AccountsManager::initWithAccounsInfoArray(Array::make(
      {record("m1"), recordOfType(kExchangeAccountType, "e1"), record("m2"),
       recordOfType(kOrvaneAccountType, "p", {{"ChildAccounts", Array::make({record("c")})}})}));

  std::string children(std::string_view parent) const {
    std::string identifiers;
    const ArrayRef list =
        store->accountWithIdentifier(parent)->accountPropertyForKey("ChildAccounts").array();
    for (const Value& child : *list) {
      identifiers += child.dictionary()["Identifier"].string().str();
    }
    return identifiers;
  }
};

TEST_F(AChangedStore, InsertsUpdatesAndDeletesByIdentifier) {
  const auto e1 = made(recordOfType(kMailAccountType, "e1"));
  store->insertAccount(e1);
  EXPECT_NE(store->accountWithIdentifier("e1"), e1);
  store->updateAccount(e1);
  EXPECT_EQ(store->accountWithIdentifier("e1"), e1);
  store->updateAccount(made(record("stranger")));
  store->insertAccount(nullptr);
  store->replaceAccountWithAccount(nullptr, e1);
  store->replaceAccountsWithTypesWithAccounts({}, {nullptr});
  store->takeUpChangesOfAccount(nullptr);
  EXPECT_NE(store->applyToAccount(record("a"), nullptr), "");
  store->deleteAccount(made(record("stranger")));
  store->deleteAccountWithIdentifier("c");
  EXPECT_EQ(order(*store), "m1 e1 m2 p");
  store->insertAccount(made(record("last")));
  store->deleteAccount(made(record("m1")));
  store->deleteAccountWithIdentifier("p");
  EXPECT_EQ(order(*store), "e1 m2 last");
  EXPECT_FALSE(store->accountWithIdentifier("c"));
  EXPECT_TRUE(logContains("Deleting account: "));
}

TEST_F(AChangedStore, DeletesOneOfTwoThatShareAnIdentifier) {
  store = AccountsManager::initWithAccounsInfoArray(
      Array::make({record("a", {{"n", 1}}), record("b"), record("a", {{"n", 2}})}));
  store->deleteAccount(made(record("a")));
  EXPECT_EQ(order(*store), "a b");
  EXPECT_EQ(store->allBasicAccounts()->front()->accountPropertyForKey("n"), Value(1));
  store->deleteAccounts({made(record("a")), made(record("b")), made(record("a"))});
  EXPECT_EQ(order(*store), "");
}

TEST_F(AChangedStore, TellsTheEmptyIdentifierFromNone) {
  store = AccountsManager::initWithAccounsInfoArray(Array::make(
      {record(""),
       Dictionary::make(
           {{"Type", kMailAccountType}, {"Class", "IMAPAccount"}, {"Identifier", 5}})}));
  store->deleteAccountWithIdentifier("");
  ASSERT_EQ(store->count(), 1u);
  EXPECT_EQ(store->allBasicAccounts()->front()->accountPropertyForKey("Identifier"), Value(5));
  EXPECT_FALSE(store->accountWithIdentifier(""));
}

TEST_F(AChangedStore, ReplacesOneRecordInANewList) {
  const auto before = store->allBasicAccounts();
  store->replaceAccountWithAccount(made(record("m1")), made(record("x")));
  EXPECT_EQ(order(*store), "m1 e1 m2 p") << "only a stored object is replaced";
  store->replaceAccountWithAccount(
      store->accountWithIdentifier("p"),
      made(recordOfType(kExchangeAccountType, "q",
                        {{"ChildAccounts", Array::make({record("d")})}})));
  EXPECT_EQ(order(*store), "m1 e1 m2 q");
  EXPECT_EQ(store->accountWithIdentifier("d")->identifier(), "q");
  EXPECT_FALSE(store->accountWithIdentifier("c"));
  EXPECT_EQ(before->back()->identifier(), "p");
}

TEST_F(AChangedStore, ReplacesTheFirstPlaceOfARecordThatIsListedTwice) {
  store = AccountsManager::initWithAccounsInfoArray(
      Array::make({record("a"), record("b"), record("a")}));
  const auto twice = made(record("a"));
  store->updateAccount(twice);
  store->replaceAccountWithAccount(store->accountWithIdentifier("b"), made(record("c")));
  store->insertAccount(made(record("last")));
  store->replaceAccountWithAccount(twice, made(record("x")));
  EXPECT_EQ(order(*store), "x c a last");
  store->replaceAccountWithAccount(twice, made(record("y")));
  store->replaceAccountWithAccount(twice, made(record("z")));
  store->replaceAccountWithAccount(store->accountWithIdentifier("last"), made(record("end")));
  EXPECT_EQ(order(*store), "x c y end");
}

TEST_F(AChangedStore, ReplacesByTypesKeepingPlaces) {
  const struct {
    AccountsManager::AccountTypes types;
    Accounts given;
    const char* expected;
  } rows[] = {
      {{kMailAccountType}, {}, "e1 p"},
      {{kMailAccountType}, {made(record("m2")), made(record("m3"))}, "e1 m2 p m3"},
      {{kMailAccountType}, {made(recordOfType(kCalDAVAccountType, "e1"))}, "e1 p"},
      {{}, {made(record("x")), made(record("m1")), made(record("y"))}, "m1 e1 m2 p x y"},
      {{kOrvaneAccountType, kExchangeAccountType}, {}, "m1 m2"},
  };
  for (const auto& [types, given, expected] : rows) {
    const auto fresh = AccountsManager::initWithAccounsInfoArray(Array::make(
        {record("m1"), recordOfType(kExchangeAccountType, "e1"), record("m2"),
         recordOfType(kOrvaneAccountType, "p", {{"ChildAccounts", Array::make({record("c")})}})}));
    fresh->replaceAccountsWithTypesWithAccounts(types, given);
    EXPECT_EQ(order(*fresh), expected);
    for (const auto& account : *fresh->allBasicAccounts()) {
      const String identifier = account->identifier();
      EXPECT_EQ(fresh->accountWithIdentifier(identifier), account);
    }
    EXPECT_EQ(bool(fresh->accountWithIdentifier("c")), bool(fresh->accountWithIdentifier("p")));
  }
}

TEST_F(AChangedStore, HangsGivenChildrenOnceUnderTheirParents) {
  const auto parent = store->accountWithIdentifier("p");
  const auto child = made(record("c", {{"DisplayName", "new"}}));
  child->setParentAccount(parent);
  const auto orphan = made(record("o"));
  orphan->setParentAccount(made(record("nobody")));
  store->replaceAccountsWithTypesWithAccounts({}, {child, orphan});
  EXPECT_EQ(children("p"), "c");
  EXPECT_EQ(store->syncableAccountWithSyncIdentifier("none"), nullptr);
  EXPECT_FALSE(store->accountWithIdentifier("o"));

  const auto newParent = made(recordOfType(kOrvaneAccountType, "q"));
  child->setParentAccount(newParent);
  store->replaceAccountsWithTypesWithAccounts({}, {newParent, child});
  EXPECT_EQ(children("p"), "");
  EXPECT_EQ(children("q"), "c");
  EXPECT_EQ(store->accountWithIdentifier("c"), newParent);
}

TEST_F(AChangedStore, TakesAGivenRecordByWhatItStores) {
  const auto local = DeviceLocalAccount::initWithProperties(
      Dictionary::make({{"Type", kOnMyDeviceAccountType}, {"Class", "C"}, {"Identifier", "m2"}}));
  const auto grown = made(record("g"));
  grown->setParentAccount(made(record("nobody", {{"Identifier", 9}})));
  store->replaceAccountsWithTypesWithAccounts({}, {local, grown});
  EXPECT_EQ(store->allBasicAccounts()->at(2), local);
  EXPECT_EQ(store->accountWithIdentifier("g"), grown) << "a parent without identifier is none";
}

TEST_F(AChangedStore, ListsEveryIndexedChild) {
  const auto syncable = [&] {
    std::string identifiers;
    for (const auto& account : store->allBasicSyncableAccounts()) {
      if (account->parentAccount()) identifiers += account->syncStoreIdentifier().str() + " ";
    }
    return identifiers;
  };
  const auto parent = store->accountWithIdentifier("p");
  store->addChildToAccount(made(record("d", {{"Sync Identifier", "sd"}})), parent);
  store->addChildToAccount(made(record("e", {{"Sync Identifier", "se"}})),
                           made(record("stranger")));
  parent->setAccountPropertyForKey("renamed", "Identifier");
  EXPECT_EQ(syncable(), " sd se ");
  EXPECT_EQ(store->syncableAccountWithSyncIdentifier("se")->identifier(), "e");
  EXPECT_EQ(store->displayAccountWithSyncIdentifier("sd"), parent);
  EXPECT_FALSE(store->displayAccountWithSyncIdentifier("se"));

  parent->setAccountPropertyForKey("p", "Identifier");
  parent->removeAccountPropertyForKey("ChildAccounts");
  store->removeChildWithIdentifierFromAccount("d", parent);
  EXPECT_EQ(syncable(), "se ") << "the children of the list that is gone are gone";
}

TEST_F(AChangedStore, SharesAnAddedChildWithItsParent) {
  const auto parent = store->accountWithIdentifier("p");
  const auto child = made(record("d"));
  store->addChildToAccount(child, parent);
  store->addChildToAccount(child, parent);
  EXPECT_EQ(children("p"), "cdd");
  EXPECT_EQ(store->allBasicSyncableAccounts().size(), 6u) << "one index entry for both";
  child->setDisplayName("shared");
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(stored("p")["ChildAccounts"].array()[1].dictionary()["DisplayName"], Value("shared"));
  store->removeChildWithIdentifierFromAccount("nobody", parent);
  store->addChildToAccount(parent, parent);
  EXPECT_THROW(parent->setParentAccount(parent), InternalConsistencyFailure);
  EXPECT_EQ(children("p"), "cdd");
  store->removeChildWithIdentifierFromAccount("d", parent);
  EXPECT_EQ(children("p"), "c");
  EXPECT_FALSE(store->accountWithIdentifier("d"));
}

}  // namespace
}  // namespace tallbook
