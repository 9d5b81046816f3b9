// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <functional>
#include <gmock/gmock.h>

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/PlugInClass.h"
#include "tallbook/Vocabulary.h"

#include "tests/store/StoreDevice.h"

namespace tallbook {
namespace {

const Value mail = "com.orvane.Dataclass.Mail";
const Value calendars = "com.orvane.Dataclass.Calendars";
const Value notes = "com.orvane.Dataclass.Notes";

class ANotifier : public StoreDevice {
 protected:
  void SetUp() override {
    writeAccounts({recordOfType(kExchangeAccountType, "e",
                                {{"Enabled Dataclasses", Array::make({calendars, mail})}}),
                   record("quiet", {{"Enabled Dataclasses", Array::make({notes})}}),
                   record("off", {{"Enabled Dataclasses", Array::make()}})});
    store = AccountsManager::init();
  }
  void TearDown() override { AccountsManager::_setShouldSkipNotifications(false); }
  std::vector<std::string> heardAfterSaving() {
    heard().clear();
    EXPECT_TRUE(store->saveAllAccounts());
    return heard();
  }

  std::shared_ptr<AccountsManager> store;
  using Lines = std::vector<std::string>;
};

const char* const kBoth = "[\"com.orvane.Dataclass.Calendars\", \"com.orvane.Dataclass.Mail\"]";

TEST_F(ANotifier, HearsOfEachChangeThatConcernsIt) {
  const std::string kept = std::string("1 e ") + kBoth;
  const struct {
    const char* what;
    std::function<void(AccountsManager&)> change;
    Lines expected;
  } rows[] = {
      {"nothing", [](auto&) {}, {}},
      {"a dataclass off",
       [](auto& s) {
         s.accountWithIdentifier("e")->setEnabledForDataclass(false, calendars.string());
       },
       {kept}},
      {"another property",
       [](auto& s) { s.accountWithIdentifier("e")->setDisplayName("changed"); },
       {"1 e [\"com.orvane.Dataclass.Mail\"]"}},
      {"the active flag and the children",
       [](auto& s) {
         s.accountWithIdentifier("e")->setAccountPropertyForKey(true, "IsActive");
         s.accountWithIdentifier("e")->setAccountPropertyForKey(Array::make(), "ChildAccounts");
       },
       {}},
      {"a dataclass that it does not care for",
       [](auto& s) { s.accountWithIdentifier("quiet")->setDisplayName("changed"); },
       {}},
      {"a property of an account with nothing enabled",
       [](auto& s) { s.accountWithIdentifier("off")->setDisplayName("changed"); },
       {}},
      {"one added beside those that stay",
       [](auto& s) {
         s.insertAccount(BasicAccount::initWithProperties(
             record("a", {{"Enabled Dataclasses", Array::make({mail})}})));
       },
       {"0 a []"}},
      {"one removed beside one that stays and one that is changed",
       [](auto& s) {
         s.deleteAccountWithIdentifier("off");
         s.accountWithIdentifier("e")->setDisplayName("changed again");
       },
       {"1 e [\"com.orvane.Dataclass.Mail\"]"}},
      {"an account removed and one added",
       [](auto& s) {
         s.deleteAccountWithIdentifier("e");
         s.insertAccount(BasicAccount::initWithProperties(
             record("new", {{"Enabled Dataclasses", Array::make({mail})}})));
       },
       {"2 e [\"com.orvane.Dataclass.Mail\"]", "0 new []"}},
  };
  for (const auto& [what, change, expected] : rows) {
    change(*store);
    EXPECT_EQ(heardAfterSaving(), expected) << what;
  }
}

TEST_F(ANotifier, HearsLaterWhatWasSkipped) {
  store->accountWithIdentifier("e")->setEnabledForDataclass(false, calendars.string());
  AccountsManager::_setShouldSkipNotifications(true);
  EXPECT_EQ(heardAfterSaving(), Lines{});
  AccountsManager::_setShouldSkipNotifications(false);
  EXPECT_EQ(heardAfterSaving(), Lines{std::string("1 e ") + kBoth});
  EXPECT_EQ(heardAfterSaving(), Lines{});
}

TEST_F(ANotifier, IsToldOfWhatHasNoOriginalOrNoCurrentProperties) {
  const DictionaryRef account = record("m", {{"Enabled Dataclasses", Array::make({mail, notes})}});
  const std::pair<DictionaryRef, DictionaryRef> rows[] = {{nullptr, account}, {account, nullptr}};
  for (const auto& [original, current] : rows) {
    AccountsManager::NotificationBatch batch;
    AccountsManager::_addNotificationToDictionaryForChangeTypeOriginalPropertiesCurrentProperties(
        batch, 1, original, current);
    ASSERT_EQ(batch.size(), 1u);
    const DictionaryRef change = (*batch.front().second)[0].dictionary();
    EXPECT_EQ((*change)["AccountID"], Value("m"));
    const ArrayRef enabled = (*change)["OriginalDataclasses"].array();
    EXPECT_EQ(enabled->size(), original ? 2u : 0u);
    EXPECT_TRUE(enabled->isFrozen());
  }
  try {
    AccountsManager::_notifierClassNamesForAccountTypeDataclass(nullptr, "");
    ADD_FAILURE();
  } catch (const InternalConsistencyFailure& failure) {
    EXPECT_THAT(failure.what(), ::testing::EndsWith("for the type (null)"));
  }
}

TEST_F(ANotifier, IsAskedAroundASwitchForWhatItOffers) {
  heard().clear();
  const auto account = store->accountWithIdentifier("e");
  AccountsManager::accountWillChangeForDataclass(account, mail.string());
  AccountsManager::accountDidChangeForDataclass(account, mail.string());
  AccountsManager::accountWillChangeForDataclass(account, notes.string());
  EXPECT_EQ(heard(), Lines{"will e com.orvane.Dataclass.Mail"});
}

TEST_F(ANotifier, FailsWithTheTextOfItsDefect) {
  const auto entry = [](std::initializer_list<std::pair<String, Value>> more) {
    const DictionaryRef description =
        Dictionary::make({{"Supported Dataclasses", Array::make({mail})}});
    for (const auto& [key, value] : more) description->set(key, value);
    return Value(Array::make(
        {Dictionary::make({{"Type", "NotifierAccount"}, {"Description", description}})}));
  };
  const PlugInRegistration deaf(kPlugInInterfaceVersion, [] {
    PlugInClass made;
    made.name = "DeafNotifier";
    return made;
  });
  const std::pair<Value, std::string> rows[] = {
      {entry({{"Framework", "/usr/lib/creators.so"}, {"Class", "DeafNotifier"}}),
       "The class DeafNotifier does not offer noteAccountChanges:"},
      {Value("no array"),
       "Malformed AccountCreators information. Could not find the information for the type Mail"},
      {entry({}),
       "Malformed AccountCreators information. Could not find the path to the framework for the "
       "notifier with type Mail"},
      {entry({{"Framework", "/usr/lib/creators.so"}}),
       "Malformed AccountCreators information. Could not find the name of the class for "
       "notificatinos with the type Mail"},
      {entry({{"Framework", "/usr/lib/creators.so"}, {"Class", "Nobody"}}),
       "Could not find a class for class name Nobody"},
      {entry({{"Framework", "/nowhere.so"}, {"Class", "HearingNotifier"}}),
       "Could not load the account creator framework " + path("/nowhere.so") + ". Error "},
  };
  for (const auto& [entries, text] : rows) {
    restart();
    platform().resources.replace("AccountCreators", Dictionary::make({{"Mail", entries}}));
    const auto fresh = AccountsManager::initWithAccounsInfoArray(nullptr);
    fresh->insertAccount(BasicAccount::initWithProperties(
        record("m", {{"Enabled Dataclasses", Array::make({mail})}})));
    try {
      static_cast<void>(fresh->saveAllAccounts());
      ADD_FAILURE() << "no failure: " << text;
    } catch (const InternalConsistencyFailure& failure) {
      EXPECT_EQ(std::string(failure.what()).substr(0, text.size()), text);
    }
    EXPECT_TRUE(stored("m")) << "the file is written before anyone is told";
  }
}

TEST_F(ANotifier, GroupsOfSubscribedCalendarsHaveATitle) {
  const auto title = [](const char* type, bool beginning) {
    return AccountsManager::displayNameForGroupOfAccountTypeForBeginningOfSentence(type, beginning);
  };
  EXPECT_FALSE(title("CalDAV", true));
  EXPECT_FALSE(title("Subscribed Calendar", true).empty());
  EXPECT_FALSE(title("Subscribed Calendar", true) == title("Subscribed Calendar", false));
}

}  // namespace
}  // namespace tallbook
