// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/Vocabulary.h"

#include "tests/model/Lists.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

class ADeviceLocalAccount : public ThrowAwayDevice {
 protected:
  /// An empty table: each text is then its key.
  void shipNoTexts() {
    platform().resources.replaceStrings("DeviceLocalAccount", "en", Dictionary::make());
  }
  void pair(const String& key, const Value& record) {
    platform().pairing.domains["com.orvane.mobile.tethered_sync"] =
        Dictionary::make({{key, record}});
  }
};

TEST_F(ADeviceLocalAccount, IsCalledAfterTheClassOfTheDevice) {
  for (const auto& [deviceClass, text] :
       {std::pair{Value("Media Player"), "On My Media Player"},
        std::pair{Value("phone"), "On My Phone"}, std::pair{Value("Tablet"), "On My Tablet"},
        std::pair{Value(), "On My Handra"}, std::pair{Value(4), "On My Handra"},
        std::pair{Value("wrist watch"), "On My Handra"}}) {
    platform().information.answers["DeviceClass"] = deviceClass;
    EXPECT_EQ(DeviceLocalAccount::typeString(), text);
  }
  platform().information.answers["DeviceClass"] = "Phone";
  speak("de_AT.UTF-8");
  EXPECT_EQ(DeviceLocalAccount::typeString(), "Auf meinem Telefon");
}

TEST_F(ADeviceLocalAccount, FindsItsTextWhateverAlphabetTheDevicesClassIsWrittenIn) {
  platform().resources.replaceStrings(
      "DeviceLocalAccount", "en",
      Dictionary::make({{"ON_MY_DEVICE_TYPE_ÉCRAN_À_LIRE", "On My Écran"},
                        {"ON_MY_DEVICE_TYPE_ΠΛΆΚΑ", "On My Tablet"},
                        {"ON_MY_DEVICE_TYPE_GROß", "On My Big One"},
                        {"ON_MY_DEVICE_TYPE_HANDRA", "On My Handra"}}));
  for (const auto& [deviceClass, text] :
       {std::pair{"écran à lire", "On My Écran"}, std::pair{"πλάκα", "On My Tablet"},
        std::pair{"groß", "On My Big One"}, std::pair{"", "On My Handra"}}) {
    platform().information.answers["DeviceClass"] = deviceClass;
    EXPECT_EQ(DeviceLocalAccount::typeString(), text);
  }
}

TEST_F(ADeviceLocalAccount, IsMadeByItsOwnClass) {
  const std::shared_ptr<DeviceLocalAccount> accounts[] = {
      DeviceLocalAccount::_initWithTypeClass("OnMyDevice", "DeviceLocalAccount"),
      DeviceLocalAccount::accountWithTypeClass("OnMyDevice", "DeviceLocalAccount")};
  for (const auto& account : accounts) EXPECT_EQ(account->identifier(), "DeviceLocalAccount");
}

TEST_F(ADeviceLocalAccount, HasAFixedIdentityWhateverItStores) {
  const auto record =
      BasicAccount::initWithProperties(Dictionary::make({{"Type", "OnMyDevice"},
                                                         {"Class", "DeviceLocalAccount"},
                                                         {"Identifier", "other"},
                                                         {"DisplayName", "other"}}));
  const auto account = DeviceLocalAccount::accountWithBasicAccount(record);
  EXPECT_EQ(account->identifier(), "DeviceLocalAccount");
  EXPECT_EQ(account->syncStoreIdentifier(), "DeviceLocalAccount");
  EXPECT_EQ(account->displayName(), "On My Handra");
  EXPECT_EQ((*account->properties())["Identifier"], Value("other"));

  const DictionaryRef properties = DeviceLocalAccount::basicAccountProperties("Subclass");
  EXPECT_TRUE(equalContent(properties, Dictionary::make({{"Type", "OnMyDevice"},
                                                         {"Class", "Subclass"},
                                                         {"Type String", "On My Handra"},
                                                         {"Short Type String", "On My Handra"},
                                                         {"Identifier", "DeviceLocalAccount"}})));
  record->_forcedSetAccountPropertyForKey("X", "Type");
  EXPECT_FALSE(DeviceLocalAccount::accountWithBasicAccount(record));
}

TEST_F(ADeviceLocalAccount, NamesTheComputerThatSyncsADataclass) {
  shipNoTexts();
  struct Case {
    const char* key;
    Value record;
    String dataclass;
    const char *source, *beginning, *middle, *reference;
  };
  const auto by = [](const Value& system) { return Dictionary::make({{"SyncingOS", system}}); };
  const char* const on = "ON_MY_DEVICE_TYPE_HANDRA";
  const char* const mid = "ON_MY_DEVICE_TYPE_MID_SENTENCE_HANDRA";
  const char* const your = "ON_YOUR_DEVICE_TYPE_MID_SENTENCE_HANDRA";
  const char* const pc = "FROM_MY_COMPUTER_TYPE_PC";
  const char* const pcMid = "FROM_MY_COMPUTER_TYPE_PC_MID_SENTENCE";
  const char* const withPC = "SYNCED_WITH_YOUR_COMPUTER_TYPE_PC_MID_SENTENCE";
  for (const Case& each : {
           Case{"Mail Accounts", by("Quarro"), kAccountDataclassMail, "Quarro",
                "FROM_MY_COMPUTER_TYPE_PARLANE", "FROM_MY_COMPUTER_TYPE_PARLANE_MID_SENTENCE",
                "SYNCED_WITH_YOUR_COMPUTER_TYPE_PARLANE_MID_SENTENCE"},
           Case{"Calendars", by("Windows"), kAccountDataclassReminders, "Windows", pc, pcMid,
                withPC},
           Case{"SyncingOS", "Windows", kAccountDataclassUbiquity, "Windows", pc, pcMid, withPC},
           Case{"Notes", by("Handra"), kAccountDataclassNotes, "Handra", on, mid, your},
           Case{"Notes", by(3), kAccountDataclassNotes, "Handra", on, mid, your},
           Case{"Notes", "Windows", kAccountDataclassNotes, "Handra", on, mid, your},
           Case{"Contacts", by("Windows"), kAccountDataclassBookmarks, "Handra", on, mid, your},
           Case{"Contacts", by("Windows"), kAccountDataclassUbiquity, "Handra", on, mid, your},
       }) {
    pair(each.key, each.record);
    using Account = DeviceLocalAccount;
    EXPECT_EQ(Account::tetheredSourceForDataClass(each.dataclass), each.source);
    EXPECT_EQ(Account::isTetheredSyncingDataclass(each.dataclass),
              each.source != std::string_view("Handra"));
    const auto text = &Account::localizedSyncSourceStringForDataClassForBeginningOfSentence;
    EXPECT_EQ(text(each.dataclass, true), each.beginning);
    EXPECT_EQ(text(each.dataclass, false), each.middle);
    EXPECT_EQ(Account::localizedReferenceToSyncSourceStringForDataClass(each.dataclass),
              each.reference);
  }
  platform().pairing.domains.clear();
  EXPECT_EQ(DeviceLocalAccount::tetheredSourceForDataClass(kAccountDataclassMail), "Handra");
}

}  // namespace
}  // namespace tallbook
