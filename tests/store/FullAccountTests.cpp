// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/Vocabulary.h"

#include "tests/store/StoreDevice.h"

namespace tallbook {
namespace {

class AStoreOfFullAccounts : public StoreDevice {};

TEST_F(AStoreOfFullAccounts, HandsThemOutByIdentifierAndType) {
  const auto store = AccountsManager::initWithAccounsInfoArray(Array::make(
      {recordOfType(
           kOrvaneAccountType, "p",
           {{"ChildAccounts", Array::make({recordOfType(kGmailAccountType, "c1"), record("c2")})}}),
       recordOfType(kExchangeAccountType, "e"), recordOfType(kGmailAccountType, "g")}));
  const auto child = store->fullAccountWithIdentifierLoader("c1", nullptr);
  EXPECT_EQ(child->identifier(), "c1");
  EXPECT_EQ(child->parentAccount(), store->accountWithIdentifier("p"));
  EXPECT_FALSE(store->fullAccountWithIdentifierLoader("", nullptr));
  EXPECT_FALSE(store->fullAccountWithIdentifierLoader("nobody", nullptr));
  const auto gmail = store->accountsWithTypes({kGmailAccountType});
  ASSERT_EQ(gmail.size(), 2u);
  EXPECT_EQ(gmail[0], child);
  EXPECT_EQ(gmail[1]->identifier(), "g");
}

TEST_F(AStoreOfFullAccounts, KnowsWhichAreForMail) {
  const auto store = AccountsManager::initWithAccounsInfoArray(
      Array::make({recordOfType(kExchangeAccountType, "e"), recordOfType(kGmailAccountType, "g")}));
  const auto mail = store->allMailAccounts();
  ASSERT_EQ(mail.size(), 1u);
  EXPECT_EQ(mail[0]->identifier(), "g");
}

TEST_F(AStoreOfFullAccounts, MakesTheDeviceLocalAccountOnce) {
  const auto store = AccountsManager::initWithAccounsInfoArray(Array::make({record("m")}));
  const auto local = store->fullDeviceLocalAccount();
  EXPECT_EQ(local->identifier(), "DeviceLocalAccount");
  EXPECT_TRUE(std::dynamic_pointer_cast<DeviceLocalAccount>(local));
  EXPECT_EQ(order(*store), "m DeviceLocalAccount");
  EXPECT_TRUE(logContains("DeviceLocalAccount missing. Creating..."));
  platform().log.lines.clear();
  EXPECT_EQ(store->fullDeviceLocalAccount(), local);
  EXPECT_FALSE(logContains("missing"));
  EXPECT_FALSE(test::exists(accountsPath()));
}

}  // namespace
}  // namespace tallbook
