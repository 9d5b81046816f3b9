// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Vocabulary.h"

#include "store/TBRuntimeFixMailAccount.h"
#include "tests/store/StoreDevice.h"

namespace tallbook {
namespace {

class AMailFixer : public StoreDevice {
 protected:
  using Notices = std::vector<std::pair<std::string, std::string>>;
  const Notices& notices() { return platform().capturedPreferences.notices; }

  static DictionaryRef broken(const String& identifier, const Value& accountPath = {}) {
    return record(identifier, {{"Class", "MailAccount"}, {"AccountPath", accountPath}});
  }
};

TEST_F(AMailFixer, TakesTheClassFromTheMailDataPath) {
  const struct {
    const char* type;
    const char* accountClass;
    Value path;
    FixerVerdict verdict;
    const char* expected;
  } rows[] = {
      {"Mail", "MailAccount", "~/Library/Mail/IMAP-a@b", FixerVerdict::Fixed, "IMAPAccount"},
      {"Mail", "Mail", "Mail/POP-a", FixerVerdict::Fixed, "POPAccount"},
      {"Mail", "Mail", "Mail/Mailboxes", FixerVerdict::Fixed, "LocalAccount"},
      {"Mail", "Mail", "Mail/AOL-a", FixerVerdict::Fixed, "AOLAccount"},
      {"Veltro", "Mail", "Mail/Parlane-a", FixerVerdict::Fixed, "PendrelAccount"},
      {"Veltro", "Mail", "Mail/Veltro-Mail/IMAP-", FixerVerdict::Fixed, "VeltroAccount"},
      {"Mail", "Mail", "Mail/IMAP-a@gmail.com@imap.gmail.com", FixerVerdict::Fixed, "GmailAccount"},
      {"Mail", "Mail", "Mail/IMAP-a@imap.mail.yahoo.com", FixerVerdict::Fixed, "YahooAccount"},
      {"Mail", "Mail", "mail/imap-a", FixerVerdict::CannotBeFixed, "Mail"},
      {"Mail", "SMTPAccount", Value(), FixerVerdict::CannotBeFixed, "SMTPAccount"},
      {"Mail", "Mail", 5, FixerVerdict::CannotBeFixed, "Mail"},
      {"Veltro", "PendrelAccount", Value(), FixerVerdict::NothingToFix, "PendrelAccount"},
      {"Exchange", "MailAccount", "Mail/IMAP-", FixerVerdict::NothingToFix, "MailAccount"},
  };
  for (const auto& row : rows) {
    const auto account = BasicAccount::initWithProperties(
        recordOfType(row.type, "a", {{"Class", row.accountClass}, {"AccountPath", row.path}}));
    EXPECT_EQ(TBRuntimeFixMailAccount().fixBasicAccountIfNeededLoggingMessage(*account, "a test"),
              row.verdict)
        << row.path.description();
    EXPECT_EQ(account->accountClass(), row.expected);
  }
  EXPECT_TRUE(logContains("Could not fix the class of the mail account: "));
}

TEST_F(AMailFixer, TellsTheMailApplicationOnceARepairIsSaved) {
  writeAccounts({broken("loaded", "Mail/IMAP-"), broken("hopeless")});
  const auto store = AccountsManager::init();
  EXPECT_EQ(order(*store), "loaded");
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(notices(), Notices{}) << "repaired while loading, nothing to repair when saving";
  EXPECT_EQ(stored("loaded")["Class"], Value("IMAPAccount"));

  store->insertAccount(BasicAccount::initWithProperties(broken("late", "Mail/POP-")));
  ASSERT_TRUE(store->saveAllAccounts());
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_EQ(notices(), (Notices{{"com.orvane.quillpost", "MailAccounts"}}));

  const auto ofOne = AccountsManager::initWithAccounsInfoArray(nullptr);
  ofOne->insertAccount(BasicAccount::initWithProperties(broken("only", "Mail/POP-")));
  ASSERT_TRUE(ofOne->saveAllAccounts());
  EXPECT_EQ(notices().size(), 2u);
}

TEST_F(AMailFixer, LeavesAHopelessRecordInTheFileOnly) {
  const auto store = AccountsManager::init();
  store->insertAccount(BasicAccount::initWithProperties(
      record("m", {{"Enabled Dataclasses", Array::make({kAccountDataclassMail})},
                   {"ChildAccounts", Array::make({record("child")})}})));
  ASSERT_TRUE(store->saveAllAccounts());
  ASSERT_TRUE(store->accountWithIdentifier("child"));
  heard().clear();
  store->accountWithIdentifier("m")->setAccountClass("Unheard Of");
  ASSERT_TRUE(store->saveAllAccounts());
  EXPECT_FALSE(store->accountWithIdentifier("m"));
  EXPECT_EQ(store->allBasicSyncableAccounts().size(), store->count()) << "without the child";
  EXPECT_EQ(stored("m")["Class"], Value("Unheard Of"));
  EXPECT_EQ(heard(), std::vector<std::string>{"2 m [\"com.orvane.Dataclass.Mail\"]"});
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(store->unloadableRecords().size(), 1u) << "of one save";
    ASSERT_TRUE(store->saveAllAccounts());
  }
}

}  // namespace
}  // namespace tallbook
