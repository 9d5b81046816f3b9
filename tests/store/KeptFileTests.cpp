// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <filesystem>
#include <map>
#include <set>
#include <sys/stat.h>

#include "tests/store/StoreDevice.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {

namespace fs = std::filesystem;

/// A device whose accounts file is none.
class AMalformedFile : public StoreDevice {
 protected:
  void writeMalformed(std::string_view bytes = "all my accounts") {
    // A file of its own each time, as if another program had put it in place.
    fs::remove(accountsPath());
    test::writeFile(accountsPath(), bytes);
  }
  static std::shared_ptr<AccountsManager> changedStore() {
    const auto store = AccountsManager::init();
    store->insertAccount(BasicAccount::initWithProperties(record("new")));
    return store;
  }
  static bool save() { return changedStore()->saveAllAccounts(); }
  std::string keptPath(int number) const {
    return accountsPath() + ".unreadable-" + std::to_string(number);
  }
  /// The kept files' content by the end of their names.
  using Kept = std::map<std::string, std::string>;
  Kept kept() const {
    Kept files;
    const std::string start = fs::path(accountsPath()).filename().string() + ".unreadable-";
    for (const std::string& name : test::namesIn(preferencesFolder())) {
      if (!name.starts_with(start)) continue;
      files[name.substr(start.size())] = test::readFile(preferencesFolder() + "/" + name);
    }
    return files;
  }
  void forgetKept() const {
    for (const auto& [number, bytes] : kept()) {
      fs::remove(accountsPath() + ".unreadable-" + number);
    }
  }
};

TEST_F(AMalformedFile, IsKeptBesideTheOneThatReplacesIt) {
  test::writePropertyList(path("/text"), "no dictionary");
  test::writePropertyList(path("/no accounts"), Dictionary::make({{"Accounts", "none"}}));
  for (const std::string& bytes :
       {std::string(), std::string("no property list"), test::readFile(path("/text")),
        test::readFile(path("/no accounts"))}) {
    fs::remove(keptPath(1));
    writeMalformed(bytes);
    fs::permissions(accountsPath(), fs::perms(0640));
    ASSERT_TRUE(save());
    EXPECT_EQ(kept(), (Kept{{"1", bytes}}));
    EXPECT_EQ(fs::status(keptPath(1)).permissions(), fs::perms(0640)) << "it is the file itself";
    EXPECT_TRUE(stored("new"));
    EXPECT_FALSE(test::exists(generationsFolder())) << "it is no generation of the accounts file";
  }
}

TEST_F(AMalformedFile, IsKeptOnce) {
  writeMalformed("the same");
  EXPECT_TRUE(save());
  writeMalformed("the same");
  EXPECT_TRUE(save());
  EXPECT_EQ(kept(), (Kept{{"1", "the same"}}));
  writeMalformed("not same");
  EXPECT_TRUE(save());
  EXPECT_EQ(kept(), (Kept{{"1", "the same"}, {"2", "not same"}}));
}

TEST_F(AMalformedFile, IsKeptWithEightOthers) {
  for (const char* name : {"07", "x", "", "4x", "-3", "99999999999999999999"}) {
    test::writeFile(accountsPath() + ".unreadable-" + name, "another program's");
  }
  test::writeFile(keptPath(7), "7");
  Kept expected = kept();
  for (int number = 8; number < 20; ++number) {
    writeMalformed(std::to_string(number));
    EXPECT_TRUE(save());
  }
  expected.erase("7");
  for (int number = 11; number < 20; ++number) {
    expected[std::to_string(number)] = std::to_string(number);
  }
  EXPECT_EQ(kept(), expected);
}

TEST_F(AMalformedFile, IsNeverLostWhicheverStepFailsOrIsTheLast) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  std::set<std::string> refused;
  for (const bool isLast : {false, true}) {
    for (std::size_t n = 1;; ++n) {
      SCOPED_TRACE("operation " + std::to_string(n));
      forgetKept();
      writeMalformed();
      files.heal();
      const auto store = changedStore();
      isLast ? files.stopAt(n) : files.failAt(n, std::make_error_code(std::errc::io_error));
      bool isSaved = false;
      try {
        isSaved = store->saveAllAccounts();
      } catch (const Stopped&) {
      }
      if (files.operations() < n) break;
      if (test::readFile(accountsPath()) != "all my accounts") {
        EXPECT_TRUE(isSaved || isLast);
        EXPECT_EQ(kept(), (Kept{{"1", "all my accounts"}}));
        EXPECT_TRUE(stored("new"));
      } else if (!isLast &&
                 store->saveFailure().operation == "keep the file that is no accounts file") {
        EXPECT_FALSE(isSaved);
        EXPECT_EQ(store->saveFailure().error, std::errc::io_error);
        refused.insert(files.names().at(n - 1));
      }
    }
  }
  EXPECT_EQ(refused, (std::set<std::string>{"flush", "link", "look", "names"}));
}

TEST_F(AMalformedFile, IsCopiedWhereItCannotHaveASecondName) {
  writeMalformed();
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  files.failEvery("link", std::make_error_code(std::errc::operation_not_permitted));
  EXPECT_TRUE(save());
  EXPECT_EQ(kept(), (Kept{{"1", "all my accounts"}}));
  EXPECT_EQ(fs::status(keptPath(1)).permissions(), fs::perms(0600));
  writeMalformed("others");
  files.failEvery("giveTo", std::make_error_code(std::errc::operation_not_permitted));
  EXPECT_FALSE(save());
  EXPECT_EQ(test::readFile(accountsPath()), "others");
}

TEST_F(AMalformedFile, IsLookedForAgainWhereAnotherTookItsPlace) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  // Both are longer: another version, whatever inode and time they get.
  const std::string malformed = "all my accounts and more";
  test::writePropertyList(path("/whole"), Dictionary::make({{"Accounts", Array::make()}}));
  const std::string whole = test::readFile(path("/whole"));
  const std::set<Kept> expected[] = {{{{"1", "all my accounts"}},
                                      {{"1", malformed}},
                                      {{"1", "all my accounts"}, {"2", malformed}}},
                                     {{}, {{"1", "all my accounts"}}}};
  for (const bool isWhole : {false, true}) {
    std::set<Kept> met;
    for (std::size_t n = 1;; ++n) {
      SCOPED_TRACE("operation " + std::to_string(n));
      forgetKept();
      writeMalformed();
      files.heal();
      const auto store = changedStore();
      files.callAt(n, [&] {
        test::writeFile(path("/other"), isWhole ? whole : malformed);
        fs::rename(path("/other"), accountsPath());
      });
      ASSERT_TRUE(store->saveAllAccounts());
      if (files.operations() < n) break;
      met.insert(kept());
    }
    EXPECT_EQ(met, expected[isWhole]) << "what was read and replaced, and nothing else";
  }
}

TEST_F(AMalformedFile, IsKeptOnceByTwoSaves) {
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  for (std::size_t n = 1;; ++n) {
    forgetKept();
    writeMalformed();
    files.heal();
    const auto store = changedStore();
    files.callAt(n, [&] {
      const std::string content = test::readFile(accountsPath());
      if (content == "all my accounts" && kept().empty())
        fs::create_hard_link(accountsPath(), keptPath(1));
    });
    EXPECT_TRUE(store->saveAllAccounts());
    EXPECT_EQ(kept(), (Kept{{"1", "all my accounts"}})) << n;
    if (files.operations() < n) break;
  }
}

}  // namespace
}  // namespace tallbook
