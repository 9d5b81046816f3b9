// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/BasicAccount.h"
#include "tallbook/Vocabulary.h"

#include "tests/model/Lists.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

using test::dataclasses;
using test::failureOf;
using test::words;

class ABasicAccount : public ThrowAwayDevice {
 protected:
  ABasicAccount() {
    platform().resources.replace(
        "AccountTypesProperties",
        Dictionary::make({{"T", Dictionary::make({{"Supported Dataclasses",
                                                   dataclasses("Notes MediaStream Mail Mail "
                                                               "Ubiquity KeyValue Calendars")}})},
                          {"bare", Dictionary::make()}}));
  }
  static std::shared_ptr<BasicAccount> make(const DictionaryRef& more = nullptr,
                                            const String& type = "T") {
    const DictionaryRef properties = Dictionary::make({{"Type", type}, {"Class", "C"}});
    if (more) {
      for (const auto& [key, value] : *more) properties->set(key, value);
    }
    return BasicAccount::initWithProperties(properties);
  }
};

TEST_F(ABasicAccount, IsNotMadeOfRejectedProperties) {
  struct Case {
    Value type, className;
    std::vector<const char*> messages;
    const char* why;
  };
  for (const Case& each : {
           Case{"T", "", {"\"Missing account class.\""}, "its \"Class\" is empty"},
           Case{"T",
                5,
                {"\"Missing account class.\""},
                "its \"Class\" is of the kind integer, not string"},
           Case{"T", {}, {"\"Missing account class.\""}, "it has no \"Class\""},
           Case{"X", "C", {"\"Invalid account type: X\""}, "there is no account type \"X\""},
           Case{"X\n[forged]",
                "C",
                {"\"Invalid account type: X\\x0a[forged]\""},
                "there is no account type \"X\n[forged]\""},
           Case{7,
                "C",
                {"\"Invalid account type: 7\""},
                "its \"Type\" is of the kind integer, not string"},
           Case{{},
                {},
                {"\"Invalid account type: (null)\"", "\"Missing account class.\""},
                "it has no \"Type\""},
       }) {
    platform().log.lines.clear();
    const DictionaryRef properties = Dictionary::make();
    if (!each.type.isNull()) properties->set("Type", each.type);
    if (!each.className.isNull()) properties->set("Class", each.className);
    EXPECT_EQ(BasicAccount::whyNoRecord(properties), each.why);
    EXPECT_FALSE(BasicAccount::accountWithProperties(properties));
    ASSERT_EQ(platform().log.lines.size(), each.messages.size());
    for (std::size_t i = 0; i < each.messages.size(); ++i) {
      const std::string& line = platform().log.lines[i];
      EXPECT_EQ(line.rfind("-[BasicAccount initWithProperties:] (", 0), 0u) << line;
      EXPECT_NE(line.find(std::string(") ") + each.messages[i]), std::string::npos) << line;
    }
  }
  for (const auto& [value, kind] :
       std::initializer_list<std::pair<Value, const char*>>{{nullptr, "null"},
                                                            {true, "boolean"},
                                                            {0.5, "real"},
                                                            {Date{}, "date"},
                                                            {UID{1}, "uid"},
                                                            {Data(""), "data"},
                                                            {Array::make(), "array"}}) {
    EXPECT_EQ(BasicAccount::whyNoRecord(value),
              "it is of the kind " + std::string(kind) + ", not dictionary");
  }
  EXPECT_FALSE(BasicAccount::initWithProperties(nullptr));
  EXPECT_EQ(failureOf([] { return BasicAccount::accountWithTypeClass("T", ""); }),
            "The account class is required.");
  EXPECT_EQ(failureOf([] { return BasicAccount::accountWithTypeClass("X", "C"); }),
            "The account type (X) is not supported");
  EXPECT_EQ(failureOf([] { BasicAccount::init(); }), "Don't use this method");
}

TEST_F(ABasicAccount, FillsInMissingIdentifiers) {
  const auto fresh = make();
  EXPECT_EQ(fresh->identifier().str().size(), 36u);
  EXPECT_EQ(fresh->syncStoreIdentifier(), fresh->identifier());
  EXPECT_FALSE(fresh->originalProperties()->contains("Identifier"));
  EXPECT_FALSE(make(Dictionary::make({{"Identifier", "i"}}))->syncStoreIdentifier());
  EXPECT_EQ(make(Dictionary::make({{"Sync Identifier", "s"}}))->syncStoreIdentifier(), "s");

  // What nobody understands stays as it was.
  const auto odd = make(Dictionary::make({{"Identifier", 9}}));
  EXPECT_FALSE(odd->identifier());
  EXPECT_TRUE(equalContent(odd->properties(), odd->originalProperties()));

  const auto made = BasicAccount::accountWithTypeClass("T", "C");
  EXPECT_TRUE(equalContent(made->originalProperties(), made->properties()));
  platform().scriptedUUIDs.exhausted = true;
  EXPECT_FALSE(BasicAccount::accountWithTypeClass("T", "C")->identifier());
}

TEST_F(ABasicAccount, OwnsItsPropertiesButSharesWhatTheyHold) {
  const ArrayRef nested = Array::make({1});
  const DictionaryRef given =
      Dictionary::make({{"Type", "T"}, {"Class", "C"}, {"Identifier", "i"}, {"nested", nested}});
  const auto record = BasicAccount::initWithProperties(given);
  given->set("late", true);
  nested->append(2);
  EXPECT_FALSE(record->properties()->contains("late"));
  EXPECT_EQ(record->accountPropertyForKey("nested").array(), nested);
  EXPECT_EQ((*record->originalProperties())["nested"], Value(Array::make({1})));
  EXPECT_EQ(record->propertiesToSave(), record->properties());
}

TEST_F(ABasicAccount, GuardsItsTypeAndClass) {
  const auto record = make();
  record->setAccountPropertyForKey("X", "Type");
  record->setAccountPropertyForKey(nullptr, "Class");
  EXPECT_EQ(record->type(), "T");
  EXPECT_EQ(record->accountClass(), "C");
  record->_forcedSetAccountPropertyForKey("bare", "Type");
  record->setAccountClass(nullptr);
  EXPECT_EQ(record->type(), "bare");
  EXPECT_FALSE(record->accountClass());
  record->removeAccountPropertyForKey("Type");
  EXPECT_FALSE(record->type());
}

TEST_F(ABasicAccount, ShowsItsAncestorsPropertiesAndChangesItsOwn) {
  const auto top = make(Dictionary::make({{"DisplayName", "top"}, {"Identifier", "t"}, {"n", 1}}));
  const auto middle = make(Dictionary::make({{"DisplayName", 3}}));
  const auto child = make();
  middle->setParentAccount(top);
  child->setParentAccount(middle);
  EXPECT_EQ(child->displayName(), "top") << "a name of the wrong kind counts as absent";
  EXPECT_EQ(child->accountPropertyForKey("n"), Value(1));
  EXPECT_EQ(middle->parentAccountIdentifier(), "t");
  EXPECT_FALSE(top->parentAccountIdentifier());
  child->setDisplayName("own");
  EXPECT_EQ(child->displayName(), "own");
  child->setDisplayName(nullptr);
  EXPECT_EQ(child->displayName(), "top");
  EXPECT_FALSE(child->properties()->contains("DisplayName"));
}

TEST_F(ABasicAccount, CombinesItsDataclassLists) {
  using Feature = ManagementRestrictions::Feature;
  struct Case {
    const char *provisioned, *enabled, *parentEnabled;
    int photoStream;
    const char *effectivelyProvisioned, *effectivelyEnabled;
  };
  const char* const all = "Mail Calendars Notes MediaStream Ubiquity KeyValue";
  for (const Case& each : {
           Case{nullptr, nullptr, nullptr, 0, all, "null"},
           Case{nullptr, "Notes Backup Mail Notes", nullptr, 0, all, "Mail Notes"},
           Case{"Notes Backup", "Notes Mail", nullptr, 0, "Notes", "Notes"},
           Case{"MediaStream Mail", "MediaStream Mail", nullptr, 1, "Mail MediaStream",
                "Mail MediaStream"},
           Case{"MediaStream Mail", "MediaStream Mail", nullptr, 2, "Mail", "Mail"},
           Case{"Mail", "Mail", "Calendars", 0, "Mail", "Calendars"},
           Case{"Mail", "Mail", "", 0, "Mail", "Mail"},
           Case{"Mail", nullptr, "", 0, "Mail", ""},
       }) {
    SCOPED_TRACE(each.effectivelyEnabled);
    platform().managementRestrictions.answers[Feature::PhotoStream] = each.photoStream;
    const auto record = make();
    const auto store = [](auto& into, const String& key, const char* list) {
      if (list) into->setAccountPropertyForKey(dataclasses(list), key);
    };
    store(record, "Provisioned Dataclasses", each.provisioned);
    store(record, "Enabled Dataclasses", each.enabled);
    if (each.parentEnabled) {
      record->setParentAccount(make());
      store(record->parentAccount(), "Enabled Dataclasses", each.parentEnabled);
    }
    EXPECT_EQ(words(record->provisionedDataclasses()), each.effectivelyProvisioned);
    EXPECT_EQ(words(record->enabledDataclasses()), each.effectivelyEnabled);
  }
  EXPECT_EQ(words(make(nullptr, "T")->supportedDataclasses()), all);
}

TEST_F(ABasicAccount, IsNotChangedByASwitchThatIsSetAlready) {
  const auto account = make(nullptr);
  account->setEnabledForDataclass(true, kAccountDataclassMail);
  account->setOriginalProperties(account->properties());
  account->setEnabledForDataclass(true, kAccountDataclassMail);
  account->setEnabledForDataclass(false, kAccountDataclassNotes);
  EXPECT_TRUE(account->properties()->sharesStorageWith(*account->originalProperties()));
  account->setEnabledForDataclass(false, kAccountDataclassMail);
  EXPECT_FALSE(account->properties()->sharesStorageWith(*account->originalProperties()));
}

TEST_F(ABasicAccount, SwitchesOnlyWhatItsTypeSupports) {
  const auto record = make(Dictionary::make({{"Enabled Dataclasses", "wrong kind"}}));
  const auto stored = [&] { return words((*record->properties())["Enabled Dataclasses"].array()); };
  record->setEnabledForDataclass(true, kAccountDataclassBackup);
  EXPECT_EQ(stored(), "null");
  record->setEnabledForDataclass(true, kAccountDataclassMail);
  record->setEnabledForDataclass(true, kAccountDataclassMail);
  EXPECT_EQ(stored(), "Mail");
  record->setEnabledForDataclass(false, kAccountDataclassMail);
  EXPECT_EQ(stored(), "");
  record->_forcedSetEnabledForDataclass(true, kAccountDataclassBackup);
  EXPECT_EQ(stored(), "Backup");
  EXPECT_FALSE(record->isEnabledForDataclass(kAccountDataclassBackup));
  record->setEnabledForDataclasses(dataclasses("Notes Backup Mail Notes"));
  EXPECT_EQ(stored(), "Notes Mail");
  record->setEnabledForDataclasses(dataclasses("Backup"));
  EXPECT_FALSE(record->enabledDataclasses());

  EXPECT_EQ(words(make(nullptr, "bare")->provisionedDataclasses()), "");
  EXPECT_EQ(words(BasicAccount::_orderedDataclasses(dataclasses("!X Mail !Y Mail"))), "Mail X Y");
  EXPECT_EQ(words(BasicAccount::_orderedDataclasses(nullptr)), "");
}

TEST_F(ABasicAccount, LosesWhatDeviceManagementForbids) {
  auto& answers = platform().managementRestrictions.answers;
  using Feature = ManagementRestrictions::Feature;
  for (const auto& [feature, withdrawn] : {
           std::pair{Feature::CloudDocumentSync, "Ubiquity KeyValue"},
           std::pair{Feature::PhotoStream, "MediaStream"},
           std::pair{Feature::SharedPhotoStreams, "SharedStreams"},
           std::pair{Feature::CloudBackup, "Backup"},
           std::pair{Feature::PassesWhileLocked, "Pouchet"},
       }) {
    answers = {{feature, 2}};
    const ArrayRef restricted = Array::make();
    for (const String& each : BasicAccount::_profileRestrictedDataclasses()) {
      restricted->append(each);
      EXPECT_TRUE(BasicAccount::restrictionOnDataclass(each));
    }
    EXPECT_EQ(words(restricted), withdrawn);
    EXPECT_FALSE(BasicAccount::restrictionOnDataclass(kAccountDataclassMail));
  }
}

TEST_F(ABasicAccount, AsksDeviceManagementAboutEachFeatureOnceForOneList) {
  using Feature = ManagementRestrictions::Feature;
  const std::vector<Feature> all = {Feature::CloudDocumentSync, Feature::PhotoStream,
                                    Feature::SharedPhotoStreams, Feature::CloudBackup,
                                    Feature::PassesWhileLocked};
  const auto record =
      make(Dictionary::make({{"Provisioned Dataclasses", dataclasses("Mail Ubiquity KeyValue")},
                             {"Enabled Dataclasses", dataclasses("Mail Ubiquity KeyValue")}}));
  auto& asked = platform().managementRestrictions.asked;
  const auto askedBy = [&](const auto& question) {
    asked.clear();
    question();
    return asked;
  };
  EXPECT_EQ(askedBy([&] { (void)record->provisionedDataclasses(); }), all);
  EXPECT_EQ(askedBy([&] { (void)record->enabledDataclasses(); }), all);
  const auto askedFor = [&](std::string_view dataclass) {
    return askedBy([&] { EXPECT_TRUE(record->isEnabledForDataclass(dataclass)); });
  };
  EXPECT_EQ(askedFor(kAccountDataclassMail), std::vector<Feature>());
  EXPECT_EQ(askedFor(kAccountDataclassKeyValue), std::vector{Feature::CloudDocumentSync});
}

}  // namespace
}  // namespace tallbook
