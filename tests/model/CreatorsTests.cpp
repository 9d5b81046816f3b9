// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <filesystem>
#include <gmock/gmock.h>

#include "tallbook/AccountCreators.h"
#include "tallbook/BasicAccount.h"

#include "model/PlugInRegistry.h"
#include "tests/model/Lists.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

using test::failureOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

DictionaryRef creator(const Value& role, const Value& framework, const Value& className) {
  const DictionaryRef description = Dictionary::make();
  if (!framework.isNull()) description->set("Framework", framework);
  if (!className.isNull()) description->set("Class", className);
  return Dictionary::make({{"Type", role}, {"Description", description}});
}

class AnAccountWithCreators : public ThrowAwayDevice {
 protected:
  AnAccountWithCreators() {
    for (const char* module : {"creators", "foreign-version", "unresolved"}) {
      const std::string file = std::string("/") + module + ".so";
      std::filesystem::copy_file(TALLBOOK_BUILD_ROOT "/tests/modules" + file, path(file));
    }
  }
  void ship(std::vector<Value> entries) {
    platform().resources.replace("AccountCreators",
                                 Dictionary::make({{"Mail", Array::make(std::move(entries))}}));
  }
  static std::shared_ptr<BasicAccount> record() {
    return BasicAccount::initWithProperties(
        Dictionary::make({{"Type", "Mail"}, {"Class", "C"}, {"Identifier", "i"}}));
  }
};

struct CountingLoader final : AccountLoader {
  bool answer = false;
  int asked = 0;
  bool loadBundleForAccountWithProperties(const DictionaryRef&) override {
    ++asked;
    return answer;
  }
};

TEST_F(AnAccountWithCreators, FailsForMalformedInformation) {
  const std::string malformed = "Malformed AccountCreators information. Could not find the ";
  struct Case {
    std::vector<Value> entries;
    std::string failure;
  };
  for (const Case& each : {
           Case{{Dictionary::make({{"Type", "FullAccount"}})},
                malformed + "description for the FullAccount with type Mail"},
           Case{{creator("FullAccount", 5, "C")},
                malformed + "path to the framework for the FullAccount with type Mail"},
           Case{{creator("FullAccount", "creators.so", "")},
                malformed + "name of the class that creates FullAccount with the type Mail"},
           Case{{creator("FullAccount", "creators.so", "TestMissing")},
                "The framework/bundle where TestMissing is defined has not been loaded"},
           Case{{creator("FullAccount", "creators.so", "TestNotifier")},
                "Could not create the account with class TestNotifier and id i"},
       }) {
    restart();
    ship(each.entries);
    EXPECT_EQ(failureOf([] { return record()->fullAccountUsingLoader(nullptr); }), each.failure);
  }
  restart();
  platform().resources.replace("AccountCreators", Dictionary::make({{"Mail", 5}}));
  const std::string unknown = malformed + "information for the type Mail";
  EXPECT_EQ(failureOf([] { return record()->fullAccountUsingLoader(nullptr); }), unknown);
  EXPECT_EQ(failureOf([] { record()->refreshContainersForDataclass("all"); }), unknown);
  restart();
  platform().resources.replace("AccountCreators", Dictionary::make());
  EXPECT_EQ(failureOf([] { record()->refreshContainersForDataclass("all"); }), "")
      << "the shipped file serves a type that the device's own lacks";
}

Value notifierOf(const Value& dataclasses) {
  const DictionaryRef made = creator("NotifierAccount", "creators.so", "TestNotifier");
  (*made)["Description"].dictionary()->set("Supported Dataclasses", dataclasses);
  return made;
}

TEST_F(AnAccountWithCreators, KnowsWhichOfThemServeNobody) {
  const std::string mail = "com.orvane.Dataclass.Mail";
  const std::pair<Value, std::string> rows[] = {
      {creator("FullAccount", "creators.so", "TestFullAccountCreator"), ""},
      {creator("FullAccount", "creators.so", "TestFullAccount"), "offers neither"},
      {creator("FullAccount", "creators.so", "TestMissing"), "no class \"TestMissing\""},
      {creator("SyncAccount", "creators.so", "TestSyncAccountCreator"), ""},
      {creator("SyncAccount", "creators.so", "TestNotifier"), "no sync accounts"},
      {creator("SyncAccount", "unresolved.so", "C"), "SymbolThatNobodyProvides"},
      {creator("SyncAccount", "missing.so", "C"), "no module " + path("/missing.so")},
      {creator("SyncAccount", nullptr, "C"), "\"Framework\" names no module"},
      {creator("SyncAccount", "creators.so", nullptr), "\"Class\" names no class"},
      {creator("SyncAcount", "creators.so", "C"), "\"SyncAcount\", none of"},
      {Dictionary::make({{"Type", "SyncAccount"}}), "\"Description\" is of the kind null"},
      {"no entry", "it is of the kind string"},
      {notifierOf(Array::make({mail})), ""},
      {notifierOf(nullptr), "is of the kind null"},
      {notifierOf(Array::make({"Mail"})), "is spelled \"" + mail + "\""},
      {notifierOf(Array::make({mail, "Mial"})), "\"Mial\", no dataclass"},
  };
  std::vector<Value> entries;
  for (const auto& [entry, fault] : rows) entries.push_back(entry);
  platform().resources.replace(
      "AccountCreators",
      Dictionary::make({{"Mail", Array::make(std::move(entries))}, {"Mial", Array::make()}}));
  std::vector<AccountCreator> creators = accountCreators();
  for (std::size_t index = 0; index < std::size(rows); ++index) {
    const AccountCreator& found = creators.at(index);
    EXPECT_THAT(found.place, EndsWith(".plist, Mail[" + std::to_string(index) + "]"));
    const std::string fault = found.fault.empty() ? operationsOfCreator(found).fault : found.fault;
    EXPECT_THAT(fault, HasSubstr(rows[index].second));
    EXPECT_EQ(fault.empty(), rows[index].second.empty()) << found.place << fault;
  }
  EXPECT_EQ(creators.at(std::size(rows)).fault, "there is no account type \"Mial\"");
  EXPECT_EQ(creators.back().accountType, "OnMyDevice") << "from the shipped file";

  platform().resources.replaceBytes("AccountCreators", "no property list");
  creators = accountCreators();
  ASSERT_EQ(creators.size(), 1u) << "though the library takes nothing from the shipped file then";
  EXPECT_THAT(creators.front().place, EndsWith("AccountCreators.plist"));
  EXPECT_THAT(creators.front().fault, HasSubstr("no property list"));
}

// What the authors of modules are told.
TEST_F(AnAccountWithCreators, TellsWhatTheClassesOfItsCreatorsOfferAndLack) {
  const PlugInRegistration namesNoClass(kPlugInInterfaceVersion, [] {
    PlugInClass made;
    made.name = "TestNamesNoClass";
    made.classForAccountType = [](const String&) { return String("TestMissing"); };
    return made;
  });
  const PlugInRegistration namesAClassOfOthers(kPlugInInterfaceVersion, [] {
    PlugInClass made;
    made.name = "TestNamesAClassOfOthers";
    made.classForAccountType = [](const String&) { return String("TestNotifier"); };
    return made;
  });
  const std::string named = "offers classForAccountType and lacks accountWithBasicAccount";
  const std::tuple<const char*, const char*, std::string> rows[] = {
      {"FullAccount", "TestFullAccountCreator",
       "offers classForAccountType, accountWithBasicAccount and lacks nothing"},
      {"FullAccount", "TestNotifier",
       "it offers neither classForAccountType nor accountWithBasicAccount; offers nothing and "
       "lacks classForAccountType, accountWithBasicAccount"},
      {"FullAccount", "TestNamesNoClass",
       "its classForAccountType answers \"TestMissing\" for \"Mail\", which is no class; " + named},
      {"FullAccount", "TestNamesAClassOfOthers",
       "its classForAccountType answers \"TestNotifier\" for \"Mail\", which offers no "
       "initWithProperties; " +
           named},
      {"SyncAccount", "TestFullAccount",
       "it makes no sync accounts; offers nothing and lacks accountToRefreshForBasicAccount"},
      {"NotifierAccount", "TestFullAccount",
       "a save that concerns it fails to tell the notifiers; offers nothing and lacks "
       "accountWillChangeForDataclass, accountDidChangeForDataclass, noteAccountChanges"},
      {"NotifierAccount", "TestMissing", "the module has no class \"TestMissing\""},
  };
  for (const auto& [role, className, told] : rows) {
    const AccountCreator found{"", "Mail", role, "/creators.so", className, ""};
    EXPECT_EQ(operationsOfCreator(found).text(), told);
  }
}

TEST_F(AnAccountWithCreators, TakesWhatDropInsAddInTheOrderOfTheirNames) {
  ship({creator("SyncAccount", "creators.so", "Shipped")});
  const auto dropIn = [&](const std::string& file, const Value& content) {
    test::writePropertyList(platform().resources.dropInNamed(file, "AccountCreators"), content);
  };
  const auto forMail = [](const Value& entry) {
    return Dictionary::make({{"Mail", Array::make({entry})}});
  };
  const DictionaryRef first = creator("SyncAccount", "creators.so", "First");
  const DictionaryRef second = creator("SyncAccount", "creators.so", "Second");
  dropIn("20.plist", forMail(second));
  dropIn("10.plist", forMail(first));
  dropIn("15.plist.dpkg-new", forMail(creator("SyncAccount", "creators.so", "Unpacked")));
  dropIn("30.plist",
         Dictionary::make({{"Gmail", Array::make({second})},
                           {"Mail", Array::make({second, creator("Sync", "creators.so", "C")})}}));
  dropIn("31.plist", forMail(creator("SyncAccount", "removed.so", "C")));
  dropIn("32.plist", Array::make());
  std::filesystem::create_directory(
      platform().resources.dropInNamed("33.plist", "AccountCreators"));

  const DictionaryRef information = BasicAccount::_creatorsInfo();
  EXPECT_EQ(information["Mail"],
            Value(Array::make({creator("SyncAccount", "creators.so", "Shipped"), first, second})));
  EXPECT_TRUE(information["Gmail"].array().empty()) << "nothing counts of a drop-in with a fault";
  std::vector<std::string> faults;
  for (const AccountCreator& each : accountCreators()) {
    if (!each.fault.empty()) faults.push_back(each.place + ": " + each.fault);
  }
  EXPECT_THAT(faults, ElementsAre(HasSubstr("30.plist, Mail[1]: its \"Type\" is \"Sync\""),
                                  HasSubstr("31.plist, Mail[0]: "),
                                  HasSubstr("32.plist: it is of the kind"),
                                  HasSubstr("33.plist: it cannot be read")));
  EXPECT_TRUE(logContains("Leaving out " + faults.front()));
}

TEST_F(AnAccountWithCreators, ReadsTheInformationAgainUntilItCouldBeRead) {
  platform().resources.replaceBytes("AccountCreators", "");
  EXPECT_FALSE(BasicAccount::_accountCreationMap());
  ship({});
  const DictionaryRef kept = BasicAccount::_accountCreationMap();
  ASSERT_TRUE(kept);
  platform().resources.takeAway("AccountCreators");
  EXPECT_EQ(BasicAccount::_accountCreationMap(), kept);
}

TEST_F(AnAccountWithCreators, MakesItsFullAccountOnce) {
  ship({creator("SyncAccount", "missing.so", "C"), "no entry",
        creator("FullAccount", "/creators.so", "BasicAccount"),
        creator("FullAccount", "creators.so", "TestFullAccountCreator")});
  const auto basic = record();
  basic->setParentAccount(record());
  const auto full = basic->fullAccountUsingLoader(nullptr);
  EXPECT_EQ(basic->fullAccountUsingLoader(nullptr), full);
  EXPECT_EQ(full->parentAccount(), basic->parentAccount());
  int result = -1;
  full->renewAccountCredentialsWithHandler([&](int code) { result = code; });
  EXPECT_EQ(result, 0);
  basic->renewAccountCredentialsWithHandler([&](int code) { result = code; });
  EXPECT_EQ(result, 3);
  basic->setAccountPropertyForKey(true, "late");
  EXPECT_FALSE(full->properties()->contains("late"));
  EXPECT_TRUE(classNamed("BasicAccount")->initWithProperties) << "the first class of a name stays";
}

TEST_F(AnAccountWithCreators, AsksALoaderForFullAccountsOnly) {
  ship({creator("FullAccount", nullptr, "DeviceLocalAccount"),
        creator("SyncAccount", "missing.so", "C")});
  CountingLoader loader;
  EXPECT_NE(failureOf([&] { return record()->fullAccountUsingLoader(&loader); }).find("path to"),
            std::string::npos);
  loader.answer = true;
  EXPECT_EQ(record()->fullAccountUsingLoader(&loader)->identifier(), "DeviceLocalAccount");
  EXPECT_EQ(loader.asked, 2);
  EXPECT_NE(failureOf([&] {
              record()->_creatorClassNameForAccountTypeCreatorTypeLoader("Mail", "SyncAccount",
                                                                         &loader);
            }).find("Could not load"),
            std::string::npos);
  EXPECT_EQ(loader.asked, 2);
}

TEST_F(AnAccountWithCreators, RefusesModulesThatDoNotFit) {
  for (const auto& [module, reason] :
       {std::pair{"missing", "missing.so"}, std::pair{"unresolved", "SymbolThatNobodyProvides"},
        std::pair{"foreign-version", "version 2"}, std::pair{"foreign-version", "version 2"}}) {
    const std::string file = std::string(module) + ".so";
    const std::string failure = failureOf([&] { loadAccountCreatorFramework("//" + file); });
    EXPECT_EQ(
        failure.rfind(
            "Could not load the account creator framework " + root() + "/" + file + ". Error ", 0),
        0u)
        << failure;
    EXPECT_NE(failure.find(reason), std::string::npos) << failure;
  }
  EXPECT_FALSE(classNamed("TestFitting"));
  EXPECT_FALSE(tallbookClassNamed("TestForeign"));
  EXPECT_FALSE(tallbookClassNamed(nullptr));
}

TEST_F(AnAccountWithCreators, ForwardsRefreshesToItsSyncAccount) {
  ship({creator("SyncAccount", "creators.so", "TestSyncAccountCreator")});
  const auto basic = record();
  EXPECT_TRUE(basic->refreshContainerWithIdentifierForDataclass("container", "dataclass"));
  EXPECT_TRUE(basic->refreshContainerListForDataclass("list"));
  EXPECT_FALSE(basic->refreshContainersForDataclass("all"));
  EXPECT_TRUE(basic->refreshContainersForDataclassIsUserRequested("all", true));
}

TEST_F(AnAccountWithCreators, LogsEachRefreshThatFindsNoSyncAccount) {
  ship({creator("SyncAccount", "creators.so", "TestSyncAccountCreator")});
  const auto basic = record();
  basic->setDisplayName("nothing to sync");
  EXPECT_FALSE(basic->refreshContainersForDataclass("all"));
  EXPECT_TRUE(logContains(
      "\"ERROR: Could not create the account with class TestSyncAccountCreator and id i\""));
  basic->setDisplayName("something");
  EXPECT_TRUE(basic->_cachedSyncAccount()) << "a failed attempt is not kept";

  restart();
  ship({creator("SyncAccount", "creators.so", "TestMissing")});
  const auto lost = record();
  EXPECT_FALSE(lost->refreshContainersForDataclass("all"));
  EXPECT_FALSE(lost->refreshContainersForDataclass("all"));
  EXPECT_EQ(platform().log.lines.size(), 2u);
  EXPECT_TRUE(
      logContains("TestMissing is defined has not been loaded, so there is no syncable "
                  "account for basic account with properties {"));
  platform().log.listening = false;
  EXPECT_FALSE(lost->refreshContainersForDataclass("all"));
  EXPECT_EQ(platform().log.lines.size(), 2u);

  restart();
  ship({});
  EXPECT_FALSE(record()->refreshContainersForDataclass("all"));
  EXPECT_TRUE(platform().log.lines.empty());
}

}  // namespace
}  // namespace tallbook
