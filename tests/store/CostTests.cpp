// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <functional>

#include "tallbook/Vocabulary.h"

#include "store/AccountsMerge.h"
#include "store/ChangeDetection.h"
#include "tests/store/StoreDevice.h"
#include "tests/support/Work.h"

namespace tallbook {
namespace {

/// Texts of one length, so that two of them have to be compared to be told apart.
std::string numbered(const char* prefix, std::size_t number) {
  return prefix + std::to_string(1'000'000 + number);
}

/// Children of one identifier where `identifier` says so, and of many without it.
ArrayRef children(std::size_t count, const String& identifier = nullptr) {
  const ArrayRef list = Array::make();
  for (std::size_t i = 0; i < count; ++i) {
    list->append(record(identifier ? identifier.view() : numbered("c", i),
                        {{kAccountDisplayName, numbered("name", i)}}));
  }
  return list;
}

DictionaryRef withEnabled(const char* prefix, std::size_t count) {
  const ArrayRef list = Array::make();
  for (std::size_t i = 0; i < count; ++i) list->append(numbered(prefix, i));
  return record("a", {{kAccountEnabledDataclasses, list}});
}

/// Accounts of one identifier: alike at first sight, and each three times.
std::vector<DictionaryRef> twins(std::size_t count, const char* prefix) {
  std::vector<DictionaryRef> list;
  for (std::size_t i = 0; i < count; ++i) {
    list.push_back(record("p", {{"deep", Array::make({Array::make({numbered(prefix, i / 3)})})}}));
  }
  return list;
}

/// Records of one identifier, the last of which has as many children.
std::shared_ptr<AccountsManager> storeOfTwins(std::size_t count) {
  const ArrayRef records = Array::make();
  for (std::size_t i = 0; i < count; ++i) records->append(record("p"));
  records->append(record("p", {{kAccountChildAccounts, children(count)}}));
  return AccountsManager::initWithAccounsInfoArray(records);
}

class ALargeStore : public StoreDevice {
 protected:
  ALargeStore() { platform().log.listening = false; }
};

TEST_F(ALargeStore, DoesWorkInProportionToItsSize) {
  using test::workOf;
  const std::pair<const char*, std::function<std::size_t(std::size_t)>> rows[] = {
      {"removing children of one identifier",
       [](std::size_t count) {
         const auto parent = BasicAccount::initWithProperties(
             record("p", {{kAccountChildAccounts, children(count, "c")}}));
         const auto store = AccountsManager::initWithAccounsInfoArray(nullptr);
         store->insertAccount(parent);
         const std::size_t work =
             workOf([&] { store->removeChildWithIdentifierFromAccount("c", parent); });
         EXPECT_TRUE(parent->accountPropertyForKey(kAccountChildAccounts).array()->empty());
         return work;
       }},
      {"finding the dataclasses that a change concerns",
       [](std::size_t count) {
         const DictionaryRef before = withEnabled("before", count);
         const DictionaryRef after = withEnabled("after.", count);
         return workOf([&] {
           EXPECT_EQ(dataclassesConcernedByChange(AccountChange::Kept, before, after).size(),
                     2 * count);
         });
       }},
      {"listing the children of records with one identifier",
       [](std::size_t count) {
         const auto store = storeOfTwins(count);
         return workOf([&] {
           EXPECT_EQ(store->allBasicSyncableAccounts().size(), 2 * count + 1);
           EXPECT_FALSE(store->syncableAccountWithSyncIdentifier("nobody"));
           EXPECT_TRUE(store->accountsWithTypes({kExchangeAccountType}).empty());
         });
       }},
      {"updating records with one identifier",
       [](std::size_t count) {
         const auto store = storeOfTwins(count);
         const auto account = store->accountWithIdentifier("p");
         return workOf([&] { store->updateAccount(account); });
       }},
      {"replacing records with one identifier",
       [](std::size_t count) {
         const auto store = storeOfTwins(count);
         const auto account = store->accountWithIdentifier("p");
         return workOf(
             [&] { store->replaceAccountsWithTypesWithAccounts({kMailAccountType}, {account}); });
       }},
      {"merging accounts with one identifier",
       [](std::size_t count) {
         const std::vector<DictionaryRef> base = twins(count, "k");
         std::vector<HeldRecord> here;
         for (const DictionaryRef& account : twins(count, "h")) here.push_back({account, base[0]});
         return workOf([&] { EXPECT_EQ(mergedAccounts(base, here, base).records.size(), count); });
       }},
      {"merging dataclasses and children",
       [](std::size_t count) {
         const auto with = [&](const char* dataclasses, const String& child) {
           const DictionaryRef account = withEnabled(dataclasses, count);
           account->set(kAccountChildAccounts, children(count, child));
           return account;
         };
         const DictionaryRef base = with("b", nullptr);
         const DictionaryRef here = with("h", "c");
         const DictionaryRef file = with("f", "d");
         return workOf([&] { (void)mergedAccounts({base}, {{here, base}}, {file}); });
       }},
  };
  for (const auto& [what, work] : rows) {
    const std::size_t some = work(500);
    EXPECT_GT(some, 0u) << what;
    EXPECT_LT(work(1000), 3 * some) << what;
  }
}

TEST_F(ALargeStore, MergesWhatNobodyTouchedWithoutALookInside) {
  std::vector<DictionaryRef> base;
  std::vector<HeldRecord> here;
  const auto work = [&](std::size_t keys) {
    const DictionaryRef account = record("a");
    for (std::size_t i = 0; i < keys; ++i) account->set(numbered("k", i), numbered("v", i));
    base = {account, record("b")};
    here = {{account->mutableCopy(), account}, {record("b", {{"k", 1}}), base[1]}};
    return test::workOf([&] { EXPECT_EQ(mergedAccounts(base, here, base).records.size(), 2u); });
  };
  EXPECT_EQ(work(1000), work(1));
}

// Each record takes over the identifier, and the child of the one before it goes.
TEST_F(ALargeStore, IsLoadedWithMemoryInProportionToItsSize) {
  const auto work = [](std::size_t count) {
    const ArrayRef records = Array::make({record("p", {{kAccountChildAccounts, children(count)}})});
    for (std::size_t i = 0; i < count; ++i) {
      records->append(record("p", {{kAccountChildAccounts, children(1)}}));
    }
    return test::workOf([&] { (void)AccountsManager::initWithAccounsInfoArray(records); },
                        test::allocatedBytes);
  };
  EXPECT_LT(work(1000), 3 * work(500));
}

}  // namespace
}  // namespace tallbook
