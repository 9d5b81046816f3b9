// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/BasicAccount.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "tests/model/Lists.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

class ShippedResources : public ThrowAwayDevice {};

TEST_F(ShippedResources, CoverEveryAccountTypeAndDataclass) {
  const DictionaryRef creators = BasicAccount::_creatorsInfo();
  const DictionaryRef dataclasses = BasicAccount::_dataclassesProperties();
  ASSERT_TRUE(creators && dataclasses);
  const ArrayRef carried = Array::make();
  for (const String& type :
       {kSubscribedCalendarAccountType, kCalDAVAccountType, kCardDAVAccountType,
        kBookmarkDAVAccountType, kSMTPAccountType, kExchangeAccountType, kLDAPAccountType,
        kMailAccountType, kVeltroAccountType, kGmailAccountType, kYahooAccountType,
        kOnMyDeviceAccountType, kIMAPNotesAccountType, kOrvaneAccountType,
        kMorwickIMAPAccountType}) {
    SCOPED_TRACE(type.str());
    EXPECT_TRUE(BasicAccount::_isValidAccountType(type));
    EXPECT_TRUE((*creators)[type].array()) << "a save would fail";
    const ArrayRef supported = BasicAccount::supportedDataclassesForAccountType(type);
    if (!supported) continue;
    for (const Value& each : *supported) carried->append(each);
  }
  for (const Value& dataclass : BasicAccount::allSupportedDataclasses()) {
    SCOPED_TRACE(dataclass.description());
    EXPECT_TRUE(carried->contains(dataclass));
    const DictionaryRef entry = (*dataclasses)[*dataclass.stringView()].dictionary();
    ASSERT_TRUE(entry);
    for (const String& key : {kDataclassSupportsMultipleStores, kDataclassDisplaySwitch,
                              kDataclassRequiresUserConfirmation}) {
      EXPECT_EQ((*entry)[key].kind(), Value::Kind::Boolean) << key.view();
    }
  }
}

TEST_F(ShippedResources, HaveEveryTextInEveryLanguage) {
  for (const char* table : {"DeviceLocalAccount", "AccountsManager"}) {
    const auto textsIn = [&](const char* language) {
      const auto path =
          platform().resources.pathForResource(std::string(language) + "/" + table, "strings");
      return path ? test::readPropertyList(*path).dictionary() : nullptr;
    };
    const DictionaryRef english = textsIn("en");
    ASSERT_TRUE(english && !english->empty());
    for (const char* language : {"de", "fr"}) {
      const DictionaryRef translated = textsIn(language);
      ASSERT_TRUE(translated) << language;
      EXPECT_EQ(translated->size(), english->size()) << language;
      for (const auto& [key, text] : *english) {
        EXPECT_FALSE((*translated)[key].string().empty()) << language << " " << key.view();
      }
    }
  }
}

}  // namespace
}  // namespace tallbook
