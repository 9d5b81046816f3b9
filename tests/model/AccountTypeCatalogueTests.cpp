// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <functional>
#include <gmock/gmock.h>

#include "tallbook/AccountCreators.h"
#include "tallbook/BasicAccount.h"
#include "tallbook/DeviceLocalAccount.h"

#include "tests/model/Lists.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

using test::dataclasses;
using test::failureOf;
using test::words;
using ::testing::HasSubstr;

class AnAccountTypeCatalogue : public ThrowAwayDevice {
 protected:
  void shipType(const String& type, const DictionaryRef& entry) {
    platform().resources.replace("AccountTypesProperties", Dictionary::make({{type, entry}}));
  }
  void shipSupported(const std::string& listed) {
    shipType("T", Dictionary::make({{"Supported Dataclasses", dataclasses(listed)}}));
  }
};

TEST_F(AnAccountTypeCatalogue, KeepsRecognisedDataclassesInTheirOrder) {
  struct Case {
    const char* architecture;
    const char* listed;
    const char* kept;
  };
  for (const auto& [architecture, listed, kept] : {
           Case{"armv7", "Notes Mail !unknown Mail", "Notes Mail Mail"},
           Case{"armv7", "!one !two", "one two"},
           Case{"armv6", "Notes Mail", "Mail"},
           Case{"armv6", "Notes", "Notes"},
           Case{"armv6", "Notes !unknown", "Notes unknown"},
       }) {
    SCOPED_TRACE(std::string(architecture) + ": " + listed);
    restart();
    platform().information.answers["CPUArchitecture"] = architecture;
    shipSupported(listed);
    EXPECT_EQ(words(BasicAccount::supportedDataclassesForAccountType("T")), kept);
  }
}

TEST_F(AnAccountTypeCatalogue, TakesNewTypesFromDropIns) {
  const auto dropIn = [&](const std::string& file, const String& type, const Value& entry) {
    test::writePropertyList(platform().resources.dropInNamed(file, "AccountTypesProperties"),
                            Dictionary::make({{type, entry}}));
  };
  const auto carrying = [](const std::string& listed) {
    return Dictionary::make({{"Supported Dataclasses", dataclasses(listed)}});
  };
  dropIn("chat.plist", "Chat", carrying("Notes Contacts"));
  dropIn("chat2.plist", "Chat", carrying("Mail"));
  dropIn("mail.plist", "Mail", carrying("Notes"));
  dropIn("bare.plist", "Bare", Dictionary::make());
  dropIn("nameless.plist", "", carrying("Notes"));
  dropIn("flat.plist", "Flat", "Notes");
  EXPECT_EQ(words(BasicAccount::supportedDataclassesForAccountType("Chat")), "Notes Contacts");
  EXPECT_EQ(words(BasicAccount::supportedDataclassesForAccountType("Mail")), "Mail Notes");
  for (const char* type : {"Bare", "", "Flat"}) {
    EXPECT_FALSE(BasicAccount::_isValidAccountType(type)) << type;
  }
  EXPECT_TRUE(logContains("nameless.plist: it has a type without a name"));
  EXPECT_TRUE(logContains("flat.plist: its \"Flat\" is of the kind string, not dictionary"));
  EXPECT_TRUE(logContains("bare.plist: \"Supported Dataclasses\" of its \"Bare\" is "));
  EXPECT_TRUE(logContains("chat2.plist: the type \"Chat\" is there already"));
  EXPECT_TRUE(logContains("mail.plist: the type \"Mail\" is there already"));

  // Whoever looks at the creators hears of them too, and of the new type that nobody serves.
  std::string faults;
  for (const AccountCreator& each : accountCreators()) faults += each.fault + "\n";
  EXPECT_THAT(faults, HasSubstr("it has a type without a name"));
  EXPECT_THAT(faults, HasSubstr("it has nothing for the type \"Chat\""));
}

TEST_F(AnAccountTypeCatalogue, AnswersAbsentForWhatTheResourceLacksOrGetsWrong) {
  platform().resources.replace(
      "AccountTypesProperties",
      Dictionary::make({{"", Dictionary::make()},
                        {"bare", Dictionary::make()},
                        {"wrong", Dictionary::make({{"Supported Dataclasses", 7},
                                                    {"Enable Actions", "None"},
                                                    {"Show Reminders Separately", "yes"}})},
                        {"no dictionary", 3}}));
  for (const char* type : {"bare", "wrong", "unknown"}) {
    SCOPED_TRACE(type);
    EXPECT_EQ(BasicAccount::_isValidAccountType(type), type != std::string_view("unknown"));
    EXPECT_FALSE(BasicAccount::supportedDataclassesForAccountType(type));
    EXPECT_FALSE(BasicAccount::userActionsToEnableDataclassForAccountType("d", type));
    EXPECT_FALSE(BasicAccount::deleteAccountActionsForAccountType(type));
    EXPECT_FALSE(BasicAccount::showRemindersSeparatelyForAccountType(type));
  }
  EXPECT_FALSE(BasicAccount::_isValidAccountType(""));
  EXPECT_FALSE(BasicAccount::_isValidAccountType("no dictionary"));
}

TEST_F(AnAccountTypeCatalogue, CannotBeUsedWithoutItsResource) {
  using Basic = BasicAccount;
  using Local = DeviceLocalAccount;
  const std::pair<const char*, std::function<void()>> operations[] = {
      {"initialize", [] { Basic::initialize(); }},
      {"isMultitaskingEnabled", [] { (void)Basic::isMultitaskingEnabled(); }},
      {"allSupportedDataclasses", [] { (void)Basic::allSupportedDataclasses(); }},
      {"_orderedDataclasses", [] { (void)Basic::_orderedDataclasses(nullptr); }},
      {"_profileRestrictedDataclasses", [] { (void)Basic::_profileRestrictedDataclasses(); }},
      {"restrictionOnDataclass", [] { (void)Basic::restrictionOnDataclass("d"); }},
      {"supportedDataclassesForAccountType",
       [] { (void)Basic::supportedDataclassesForAccountType(""); }},
      {"removeActions",
       [] { (void)Basic::removeActionsIncompatibleWithSingleStoreDataclass(nullptr); }},
      {"multipleStoresSupportedByDataclass",
       [] { (void)Basic::multipleStoresSupportedByDataclass("d"); }},
      {"_dataclassesProperties", [] { (void)Basic::_dataclassesProperties(); }},
      {"createNewAccountUID", [] { (void)Basic::createNewAccountUID(); }},
      {"initWithProperties", [] { (void)Basic::initWithProperties(nullptr); }},
      {"accountWithTypeClass", [] { (void)Basic::accountWithTypeClass("Mail", ""); }},
      {"init", [] { (void)Basic::init(); }},
      {"_creatorsInfo", [] { (void)Basic::_creatorsInfo(); }},
      {"_accountCreationMap", [] { (void)Basic::_accountCreationMap(); }},
      {"_identifier", [] { (void)Local::_identifier(); }},
      {"typeString", [] { (void)Local::typeString(); }},
      {"basicAccountProperties", [] { (void)Local::basicAccountProperties(); }},
      {"isTetheredSyncingDataclass", [] { (void)Local::isTetheredSyncingDataclass("d"); }},
      {"accountWithBasicAccount", [] { (void)Local::accountWithBasicAccount(nullptr); }},
  };
  for (const auto& [name, operation] : operations) {
    restart();
    platform().resources.takeAway("AccountTypesProperties");
    EXPECT_EQ(failureOf(operation), "Could not find AccountTypesProperties.plist") << name;
  }
  for (const char* bytes : {"", "no property list", "<plist><array/></plist>"}) {
    restart();
    platform().resources.replaceBytes("AccountTypesProperties", bytes);
    EXPECT_EQ(failureOf([] { BasicAccount::initialize(); }),
              "Could not load the dataclasses configuration file");
  }
}

TEST_F(AnAccountTypeCatalogue, WithdrawsTheLastKeepLocalDataFromSingleStoreDataclasses) {
  const ArrayRef actions = Array::make({"Merge Local Data", "Keep Local Data", "Keep Local Data"});
  const ArrayRef keep = Array::make({"Keep Local Data", "None"});
  shipType("T", Dictionary::make({{"Enable Actions", actions}, {"Disable Actions", keep}}));
  platform().resources.replace(
      "DataclassesProperties",
      Dictionary::make({{"many", Dictionary::make({{"Supports Multiple Stores", true}})},
                        {"one", Dictionary::make({{"Display Dataclass Switch", 1}})}}));
  const auto toEnable = [](const char* dataclass) {
    return words(BasicAccount::userActionsToEnableDataclassForAccountType(dataclass, "T"));
  };
  EXPECT_EQ(toEnable("many"), "Merge Local Data Keep Local Data Keep Local Data");
  EXPECT_EQ(toEnable("one"), "Merge Local Data Keep Local Data");
  EXPECT_EQ(toEnable("one"), "Merge Local Data Keep Local Data") << "the catalogue changed";
  EXPECT_EQ(words(BasicAccount::userActionsToDisableDataclassForAccountType("unknown", "T")),
            "None");
  EXPECT_TRUE(BasicAccount::displayToggleForDataclass("one"));
  EXPECT_FALSE(BasicAccount::userConfirmationIsRequiredByDataclass("one"));
  platform().resources.takeAway("DataclassesProperties");
  EXPECT_TRUE(BasicAccount::multipleStoresSupportedByDataclass("many")) << "read only once";
  EXPECT_FALSE(BasicAccount::_dataclassesProperties());
}

}  // namespace
}  // namespace tallbook
