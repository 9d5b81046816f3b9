// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

#include "tallbook/PropertyList.h"

#include "tests/migration/MigrationDevice.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {
namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::StartsWith;

Value mailAccount(const std::string& accountClass) {
  return Dictionary::make({{"AccountType", accountClass}, {"uniqueId", "id of " + accountClass}});
}

/// A device with a current accounts file, whose legacy files are damaged.
class ADamagedLegacyFile : public MigrationDevice {
 protected:
  void arrangeStored() { arrange(data("legacy/stored").dictionary()); }
  /// Identifiers of the accounts file's accounts, parted by blanks.
  std::string stored() const {
    std::string identifiers;
    const ArrayRef accounts = readAccounts();
    for (const Value& account : *accounts) {
      if (!identifiers.empty()) identifiers += ' ';
      identifiers += account.dictionary()["Identifier"].string().str();
    }
    return identifiers;
  }
  /// Each of the two legacy files with what the store has left where nothing comes from it.
  struct File {
    std::string name;
    std::string path;
    std::string storedWithoutIts;
  };
  std::vector<File> files() const {
    return {{"Mail", legacyMailPath(), "exchange ldap"},
            {"Exchange", legacySyncoraPath(), "mail smtp ldap"}};
  }
};

TEST_F(ADamagedLegacyFile, ThatIsNoPropertyListGoesAsideOnceAndGivesNoAccounts) {
  const std::string whole = *binaryPropertyList(
      Dictionary::make({{"MailAccounts", Array::make({mailAccount("IMAPAccount")})}}));
  std::mt19937 random(20120919);  // NOLINT(cert-msc51-cpp): the same bytes in every run
  std::string noise(4096, '\0');
  for (char& byte : noise) byte = static_cast<char>(random());
  for (const std::string& bytes :
       {std::string(), std::string("no property list"), whole.substr(0, whole.size() - 1),
        whole.substr(0, 8), whole.substr(whole.size() / 2), noise, "bplist00" + noise,
        std::string("<?xml version=\"1.0\"?><plist><dict><key>MailAccounts</key>")}) {
    for (const File& file : files()) {
      arrangeStored();
      test::writeFile(file.path, bytes);
      const std::string accounts = test::readFile(accountsPath());
      EXPECT_TRUE(migrate());
      EXPECT_FALSE(test::exists(file.path));
      EXPECT_EQ(test::readFile(file.path + ".unreadable-1"), bytes);
      EXPECT_EQ(stored(), file.storedWithoutIts);
      EXPECT_EQ(generations(), std::vector{accounts}) << "with what it replaced";
      test::writeFile(accountsPath(), accounts);
      EXPECT_TRUE(migrate());
      EXPECT_EQ(stored(), "mail smtp exchange ldap") << "nothing is replaced again";
    }
  }
}

TEST_F(ADamagedLegacyFile, ThatIsNoFileGoesAside) {
  for (const File& file : files()) {
    for (const auto& make : std::vector<std::function<void(const std::string&)>>{
             [](const auto& path) { fs::create_directories(path + "/Mailboxes"); },
             [](const auto& path) { fs::create_directories(path); },
             [](const auto& path) { fs::create_symlink("nowhere", path); },
             [](const auto& path) { fs::create_symlink(path, path); },
             [](const auto& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); }}) {
      arrangeStored();
      make(file.path);
      test::writeFile(file.path + ".unreadable-1", "an earlier one");
      const auto kind = fs::symlink_status(file.path).type();
      EXPECT_TRUE(migrate());
      EXPECT_FALSE(test::exists(file.path));
      EXPECT_EQ(fs::symlink_status(file.path + ".unreadable-2").type(), kind);
      EXPECT_EQ(stored(), file.storedWithoutIts);
    }
    // Where a removal is finished, what is there goes unseen; a folder cannot.
    arrangeStored();
    fs::create_directories(file.path + "/Mailboxes");
    fs::create_directories(sentinelPath() + "/folder");
    EXPECT_TRUE(migrate());
    EXPECT_TRUE(fs::is_directory(file.path + ".unreadable-1/Mailboxes"));
    EXPECT_TRUE(fs::is_directory(sentinelPath() + ".unreadable-1/folder"));
    EXPECT_FALSE(test::exists(sentinelPath()));
  }
}

TEST_F(ADamagedLegacyFile, ThatCannotBeMovedAsideStaysAndIsTold) {
  for (const File& file : files()) {
    arrangeStored();
    test::writeFile(file.path, "no property list");
    FailingFileSystem failing(platform().realFileSystem());
    platform().replaceFileSystem(failing);
    failing.failEvery("renameToNew", std::make_error_code(std::errc::io_error));
    EXPECT_TRUE(migrate());
    platform().replaceFileSystem(platform().realFileSystem());
    EXPECT_EQ(test::readFile(file.path), "no property list");
    EXPECT_THAT(consoleLines(), Contains(StartsWith("Could not move " + file.path + " aside. ")));
  }
}

TEST_F(ADamagedLegacyFile, IsNoneWhereItsFolderIsMissing) {
  arrangeStored();
  fs::remove_all(preferencesFolder());
  EXPECT_TRUE(migrate());
  EXPECT_FALSE(test::exists(preferencesFolder())) << "there was nothing to do";
}

TEST_F(ADamagedLegacyFile, WithAnAccountThatNoLoadAcceptsGoesAside) {
  arrangeStored();
  test::writePropertyList(legacyMailPath(),
                          Dictionary::make({{"MailAccounts", Array::make({mailAccount("Odd")})}}));
  EXPECT_TRUE(migrate());
  EXPECT_EQ(stored(), "exchange ldap id of Odd") << "it is written all the same";
  EXPECT_EQ(AccountsManager::init()->count(), 2u);
  EXPECT_TRUE(test::exists(legacyMailPath() + ".unreadable-1"));
}

TEST_F(ADamagedLegacyFile, ThatMayNotBeReadStays) {
  if (::geteuid() == 0) GTEST_SKIP() << "the superuser may read every file";
  for (const File& file : files()) {
    arrangeStored();
    test::writePropertyList(file.path, Dictionary::make());
    fs::permissions(file.path, fs::perms::none);
    EXPECT_TRUE(migrate());
    EXPECT_TRUE(test::exists(file.path));
    EXPECT_EQ(stored(), "mail smtp exchange ldap") << "nothing is known of what it holds";
  }
}

/// The cases of `data/legacy/damaged.plist`, each a device with the identifiers "Stored" in the
/// accounts file afterwards, the legacy files that are "Left" and moved "Aside", and the "Console".
TEST_F(ADamagedLegacyFile, OfWrongKindsStaysOrGoesAside) {
  const ArrayRef cases = data("legacy/damaged").array();
  ASSERT_FALSE(cases->empty());
  for (const Value& element : *cases) {
    const DictionaryRef each = element.dictionary();
    SCOPED_TRACE(each["Case"].description());
    arrange(element.dictionary());
    for (const File& file : files()) test::writeFile(file.path + ".original", "");
    EXPECT_TRUE(migrate());
    EXPECT_EQ(each["Stored"], Value(stored()));
    const auto lines = consoleLines();
    EXPECT_EQ(each["Console"], Value(Array::make({lines.begin(), lines.end()})));
    const ArrayRef left = Array::make();
    const ArrayRef aside = Array::make();
    for (const File& file : files()) {
      if (test::exists(file.path)) left->append(file.name);
      if (test::exists(file.path + ".unreadable-1")) aside->append(file.name);
      EXPECT_EQ(test::exists(file.path + ".original"), !each->contains("Legacy " + file.name));
    }
    EXPECT_EQ(each["Left"], Value(left));
    EXPECT_EQ(each["Aside"], Value(aside));
    EXPECT_FALSE(test::exists(sentinelPath()));
  }
}

TEST_F(ADamagedLegacyFile, ThatUsesAnIdentifierTwiceGivesAllItsAccounts) {
  arrange(Dictionary::make());
  const auto account = [](const char* user, const char* accountClass = "IMAPAccount") {
    return Dictionary::make(
        {{"AccountType", accountClass}, {"uniqueId", "same"}, {"Username", user}});
  };
  test::writePropertyList(
      legacyMailPath(),
      Dictionary::make({{"DeliveryAccounts", Array::make({account("server", "SMTPAccount")})},
                        {"MailAccounts", Array::make({account("one"), account("two")})}}));
  EXPECT_TRUE(migrate());
  EXPECT_FALSE(test::exists(legacyMailPath()));
  std::string users;
  const ArrayRef accounts = readAccounts();
  for (const Value& each : *accounts) users += each.dictionary()["Username"].string().str() + " ";
  EXPECT_EQ(users, "server one two  ") << "the last is the on-device account";
}

// Only an account that a migration wrapped goes back to where it was.
TEST_F(ADamagedLegacyFile, ThatHasTheIdentifierOfSomebodysChildTakesNobodysPlace) {
  for (const char* parentType : {"Mail", "Exchange"}) {
    SCOPED_TRACE(parentType);
    arrange(Dictionary::make());
    const DictionaryRef child =
        Dictionary::make({{"Type", "CalDAV"}, {"Class", "CalDAVAccount"}, {"Identifier", "x"}});
    writeAccounts({Dictionary::make({{"Type", parentType},
                                     {"Class", "IMAPAccount"},
                                     {"Identifier", "p"},
                                     {"ChildAccounts", Array::make({child})}})});
    test::writePropertyList(
        legacyMailPath(),
        Dictionary::make(
            {{"MailAccounts", Array::make({Dictionary::make(
                                  {{"AccountType", "IMAPAccount"}, {"uniqueId", "x"}})})}}));
    EXPECT_TRUE(migrate());
    // The stored mail account gives way with its child; every other parent keeps its own.
    const bool givesWay = parentType == std::string("Mail");
    EXPECT_EQ(stored(), givesWay ? "x" : "p x");
    const Value children = readAccounts()[0].dictionary()["ChildAccounts"];
    EXPECT_EQ(children, givesWay ? Value() : Value(Array::make({child})));
  }
}

// Whatever bytes a file has, the accounts of one that goes must be in the accounts file.
TEST_F(ADamagedLegacyFile, GoesOnlyWithItsAccountsInTheAccountsFile) {
  const ArrayRef accounts = Array::make();
  for (const char* each : {"IMAPAccount", "GmailAccount", "VeltroAccount", "YahooAccount"}) {
    accounts->append(mailAccount(each));
  }
  const std::string whole = *binaryPropertyList(Dictionary::make({{"MailAccounts", accounts}}));
  std::mt19937 random(20120919);  // NOLINT(cert-msc51-cpp): the same damage in every run
  int gone = 0;
  for (int round = 0; round < 200; ++round) {
    arrange(Dictionary::make());
    writeAccounts({});
    std::string damaged = whole;
    damaged[random() % damaged.size()] = static_cast<char>(random());
    test::writeFile(legacyMailPath(), damaged);
    EXPECT_TRUE(migrate());
    const std::string aside = legacyMailPath() + ".unreadable-1";
    if (const bool isAside = test::exists(aside); isAside || test::exists(legacyMailPath())) {
      EXPECT_EQ(test::readFile(isAside ? aside : legacyMailPath()), damaged);
      continue;
    }
    ++gone;
    const DictionaryRef file = propertyListFromBytes(damaged)->dictionary();
    const ArrayRef descriptions = (*file)["MailAccounts"].array();
    EXPECT_EQ(readAccounts()->size(), descriptions ? descriptions->size() : 0);
  }
  EXPECT_GT(gone, 20);
  EXPECT_LT(gone, 180);
}

}  // namespace
}  // namespace tallbook
