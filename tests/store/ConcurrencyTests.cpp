// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <memory>

#include "tests/store/StoreDevice.h"
#include "tests/support/ChildProcess.h"

namespace tallbook {
namespace {

using test::ChildProcess;

class SeveralProcesses : public StoreDevice {
 protected:
  void SetUp() override { platform().log.listening = false; }
};

TEST_F(SeveralProcesses, EachKeepTheKeysOfTheOthers) {
  constexpr int kProcesses = 8;
  writeAccounts({record("a", {{"untouched", 1}}), record("b")});
  std::vector<std::unique_ptr<ChildProcess>> processes;
  for (int number = 0; number < kProcesses; ++number) {
    processes.push_back(std::make_unique<ChildProcess>([number](ChildProcess::Parent& parent) {
      const auto store = AccountsManager::init();
      parent.say('l');
      if (parent.hear() != 's') return false;
      const std::string key = "key of " + std::to_string(number);
      store->accountWithIdentifier("a")->setAccountPropertyForKey(number, key);
      store->accountWithIdentifier("b")->setAccountPropertyForKey(number, "contended");
      return store->saveAllAccounts();
    }));
  }
  // All have loaded before the first one saves.
  for (const auto& process : processes) ASSERT_EQ(process->hear(), 'l');
  for (const auto& process : processes) {
    process->say('s');
    ASSERT_EQ(process->wait(), 0);
  }
  for (int number = 0; number < kProcesses; ++number) {
    EXPECT_EQ(stored("a")["key of " + std::to_string(number)], Value(number));
  }
  EXPECT_EQ(stored("a")["untouched"], Value(1));
  EXPECT_EQ(stored("b")["contended"], Value(kProcesses - 1));
}

TEST_F(SeveralProcesses, SeeOnlyWholeFilesWhileOneSaves) {
  constexpr int kRecords = 50;
  const ArrayRef records = Array::make();
  for (int number = 0; number < kRecords; ++number) {
    records->append(record(std::to_string(number), {{"round", 0}}));
  }
  ASSERT_TRUE(AccountsManager::initWithAccounsInfoArray(records)->saveAllAccounts());
  ChildProcess saver([](ChildProcess::Parent& parent) {
    const auto store = AccountsManager::init();
    for (int round = 1; round <= 100; ++round) {
      for (const auto& account : *store->allBasicAccounts()) {
        account->setAccountPropertyForKey(round, "round");
      }
      if (!store->saveAllAccounts()) return false;
      if (round == 1) parent.say('s');
    }
    return true;
  });
  ASSERT_EQ(saver.hear(), 's');
  for (int load = 0; load < 300; ++load) {
    const auto store = AccountsManager::init();
    ASSERT_EQ(store->count(), unsigned{kRecords});
    const Value round = store->allBasicAccounts()->front()->accountPropertyForKey("round");
    for (const auto& account : *store->allBasicAccounts()) {
      ASSERT_EQ(account->accountPropertyForKey("round"), round);
    }
  }
  EXPECT_EQ(saver.wait(), 0);
}

}  // namespace
}  // namespace tallbook
