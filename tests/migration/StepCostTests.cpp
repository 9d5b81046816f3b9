// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Vocabulary.h"

#include "model/ServiceFacts.h"
#include "tests/migration/MigrationDevice.h"
#include "tests/support/Work.h"

namespace tallbook {
namespace {

std::string numbered(const char* prefix, std::size_t number) {
  return prefix + std::to_string(1'000'000 + number);
}

DictionaryRef account(const String& type, const String& className, const std::string& identifier) {
  return Dictionary::make(
      {{kAccountType, type}, {kAccountClass, className}, {kAccountIdentifier, identifier}});
}

class AStepOverManyAccounts : public MigrationDevice {
 protected:
  AStepOverManyAccounts() {
    platform().log.listening = false;
    AccountsManager::_setShouldSkipNotifications(true);
  }
  ~AStepOverManyAccounts() override { AccountsManager::_setShouldSkipNotifications(false); }
};

// All Gmail accounts may have the calendar of the name before the "@", and all calendars are it.
TEST_F(AStepOverManyAccounts, FoldsManyCalendarsOfOnePrincipalInProportionToTheirNumber) {
  const auto work = [](std::size_t count) {
    const ArrayRef records = Array::make();
    for (std::size_t i = 0; i < count; ++i) {
      const DictionaryRef mail = account(kMailAccountType, "GmailAccount", numbered("mail", i));
      mail->set(kAccountUsername, numbered("name@", i));
      const DictionaryRef calDAV =
          account(kCalDAVAccountType, "MobileCalDAVAccount", numbered("cal.", i));
      calDAV->set("CalDAVPrincipalConfiguration",
                  Dictionary::make({{"Login_Key", "name"},
                                    {"CalDAV_Server_Key", ServiceFacts::kGoogleCalDAVHostname}}));
      calDAV->set("CalDAVAccountConfiguration",
                  Dictionary::make({{"CalDAV_PrincipalPath_Key", "/calendar/dav/name/user"}}));
      records->append(mail);
      records->append(calDAV);
    }
    const auto store = AccountsManager::initWithAccounsInfoArray(records);
    const std::size_t compared =
        test::workOf([&] { AccountsDataMigrator()._migrateAccountsFrom7A242(store); });
    EXPECT_EQ(store->count(), count);
    for (const auto& mail : store->basicAccountsWithTypes({kGmailAccountType})) {
      EXPECT_TRUE(mail->isEnabledForDataclass(kAccountDataclassCalendars));
    }
    return compared;
  };
  EXPECT_LT(work(400), 3 * work(200));
}

TEST_F(AStepOverManyAccounts, TakesTheNamesOfManyChildrenInProportionToTheirNumber) {
  const auto work = [](std::size_t count) {
    const ArrayRef children = Array::make();
    for (const char* className : {"OthersAccount", "VeltroAccount"}) {
      for (std::size_t i = 0; i < count; ++i) {
        const DictionaryRef child = account(kVeltroAccountType, className, numbered("c", i));
        child->set(kAccountDisplayName, "name");
        children->append(child);
      }
    }
    const DictionaryRef parent = account(kOrvaneAccountType, "OAAccount", "p");
    parent->set(kAccountChildAccounts, children);
    const auto store = AccountsManager::initWithAccounsInfoArray(Array::make({parent}));
    const std::size_t compared =
        test::workOf([&] { AccountsDataMigrator()._migrateAccountsFrom8C136(store); });
    const ArrayRef left =
        store->accountWithIdentifier("p")->accountPropertyForKey(kAccountChildAccounts).array();
    for (std::size_t i = 0; i < left->size(); ++i) {
      EXPECT_EQ((*left)[i].dictionary()->contains(kAccountDisplayName), i < count);
    }
    return compared;
  };
  EXPECT_LT(work(800), 3 * work(400));
}

}  // namespace
}  // namespace tallbook
