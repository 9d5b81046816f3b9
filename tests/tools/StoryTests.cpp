// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <sys/resource.h>
#include <unistd.h>

#include "tallbook/Host.h"
#include "tallbook/PlugInClass.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook-migrate/Report.h"

namespace tallbook::tool {

const char* const kProgram = "test";

}  // namespace tallbook::tool

namespace tallbook::migrate {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
using Entries = std::initializer_list<std::pair<String, Value>>;

DictionaryRef account(const char* type, const char* className, const char* identifier,
                      Entries more = {}) {
  const DictionaryRef made = Dictionary::make({{kAccountType, type}, {kAccountClass, className}});
  if (*identifier) made->set(kAccountIdentifier, identifier);
  for (const auto& [key, value] : more) made->set(key, value);
  return made;
}

/// A description in a legacy mail file.
DictionaryRef mail(const char* className, const char* identifier, Entries more = {}) {
  const DictionaryRef made = Dictionary::make({{"AccountType", className}});
  if (*identifier) made->set("uniqueId", identifier);
  for (const auto& [key, value] : more) made->set(key, value);
  return made;
}

DictionaryRef mailFile(std::vector<Value> descriptions) {
  return Dictionary::make({{"MailAccounts", Array::make(std::move(descriptions))}});
}

DictionaryRef exchangeFile(const char* identifier) {
  const DictionaryRef work =
      Dictionary::make({{"SyncoraAccountConfigurationClass", "ExchangeAccount"},
                        {"SyncoraAccountConfigurationAccountID", identifier},
                        {"SyncoraAccountEnabledForCalendar", false}});
  return Dictionary::make({{"SyncoraAccountsKey", Array::make({work})}});
}

Value dataclasses(std::vector<Value> names) {
  return Array::make(std::move(names));
}

DictionaryRef calDAV(const char* identifier, const char* login) {
  const std::string path = "/calendar/dav/" + std::string(login) + "/user";
  return account(
      "CalDAV", "MobileCalDAVAccount", identifier,
      {{"CalDAVPrincipalConfiguration",
        Dictionary::make({{"CalDAV_Server_Key", "www.google.com"}, {"Login_Key", login}})},
       {"CalDAVAccountConfiguration", Dictionary::make({{"CalDAV_PrincipalPath_Key", path}})}});
}

/// A device tree of its own, and what is done to it while it is migrated.
class Device {
 public:
  Device() {
    std::string name = (fs::temp_directory_path() / "story-XXXXXX").string();
    root = ::mkdtemp(name.data());
    for (const char* folder :
         {"etc", "tmp", "var/mobile/Library/Mail", "var/mobile/Library/Preferences",
          "var/mobile/Library/Logs/Dorvix"}) {
      fs::create_directories(root / folder);
    }
    const std::string ids = std::to_string(::geteuid()) + ":" + std::to_string(::getegid());
    std::ofstream(root / "etc/passwd") << "mobile:x:" << ids << "::/var/mobile:/bin/sh\n";
    std::ofstream(root / "etc/group") << "mobile:x:" << ::getegid() << ":\n";
  }
  ~Device() { fs::remove_all(root); }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  fs::path accounts() const { return preferences() / "com.orvane.tallbook.plist"; }
  fs::path legacyMail() const { return root / "var/mobile/Library/Mail/Accounts.plist"; }
  fs::path legacyExchange() const { return preferences() / "com.orvane.Syncora.plist"; }
  fs::path preferences() const { return root / "var/mobile/Library/Preferences"; }
  void write(const fs::path& path, const DictionaryRef& content) const {
    std::ofstream(path, std::ios::binary) << *binaryPropertyList(content);
  }
  void writeAccounts(int version, std::vector<Value> records) const {
    write(accounts(), Dictionary::make({{kPlistVersionKey, version},
                                        {kPlistAccountsKey, Array::make(std::move(records))}}));
  }

  fs::path root;
  std::function<void(const std::string& stage)> atEndOf = [](const std::string&) {};
};

class Meddler final : public MigrationObserver {
 public:
  Meddler(Story& story, const Device& device) : _story(story), _device(device) {}

  void stageEnded(const MigrationStage& stage) override {
    _story.stageEnded(stage);
    _device.atEndOf(stage.name);
  }
  void accountLeft(const Value& record, const std::string& why) override {
    _story.accountLeft(record, why);
  }
  void recordReplaced(const DictionaryRef& before, const DictionaryRef& now) override {
    _story.recordReplaced(before, now);
  }
  void descriptionNotConverted(const Value& description, const std::string& why) override {
    _story.descriptionNotConverted(description, why);
  }
  void legacyFileEnded(const LegacyFileEnd& end) override { _story.legacyFileEnded(end); }

 private:
  Story& _story;
  const Device& _device;
};

/// A line an account, and one a legacy file that was not simply removed. The device's own account,
/// which most migrations make, is left out.
Lines linesOf(const Story& story) {
  testing::internal::CaptureStdout();
  EXPECT_TRUE(printStory(story, {true, true}));
  const auto told = tool::JSON::parse(testing::internal::GetCapturedStdout());
  Lines lines;
  const std::function<void(const tool::JSON&, const std::string&)> add =
      [&](const tool::JSON& accounts, const std::string& indent) {
        for (const auto& each : accounts) {
          if (each["type"] == "OnMyDevice") continue;
          std::string line = indent + each["identifier"].get<std::string>() + " " +
                             each["type"].get<std::string>() + " <- " +
                             each["from"].get<std::string>() + " -> " +
                             each["now"].get<std::string>();
          if (each["why"] != "") line += ": " + each["why"].get<std::string>();
          for (const auto& step : each["steps"]) {
            line += "; " + step["step"].get<std::string>() + ":";
            for (const auto& what : step["what"]) line += " " + what.get<std::string>();
          }
          lines.push_back(line);
          add(each["children"], indent + "  ");
        }
      };
  add(told["accounts"], "");
  for (const auto& file : told["legacyFiles"]) {
    if (file["end"] == "removed") continue;
    lines.push_back(file["path"].get<std::string>() + " " + file["end"].get<std::string>() + ": " +
                    file["why"].get<std::string>());
  }
  return lines;
}

struct Case {
  const char* name;
  std::function<void(Device&)> arrange;
  Lines lines;
};

void PrintTo(const Case& each, std::ostream* stream) {
  *stream << each.name;
}

class AMigration : public testing::TestWithParam<Case> {};

TEST_P(AMigration, TellsWhatBecameOfEveryAccount) {
  Device device;
  GetParam().arrange(device);
  configureHost({device.root.string(), HostOptions::Log::Nowhere, true});
  Story story(false);
  Meddler meddler(story, device);
  const auto migrator = tallbookClassNamed("AccountsDataMigrator")->makeDataMigrator();
  migrator->setObserver(&meddler);
  EXPECT_TRUE(migrator->performMigration());
  Lines lines = linesOf(story);
  if (!story.isSaved() && story.hasBegun()) lines.push_back(story.whyNotSaved());
  if (fs::exists(device.legacyMail())) lines.emplace_back("The mail file is there");
  if (fs::exists(device.legacyExchange())) lines.emplace_back("The Exchange file is there");
  EXPECT_EQ(lines, GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(
    , AMigration,
    testing::Values(
        Case{"OneIdentifierInBothLegacyFiles",
             [](Device& device) {
               device.write(device.legacyMail(), mailFile({mail("POPAccount", "same")}));
               device.write(device.legacyExchange(), exchangeFile("same"));
               device.writeAccounts(12, {});
             },
             {"same Mail <- legacy mail file -> in the file",
              "same Exchange <- legacy Exchange file -> gone: an account of the legacy mail file "
              "has its identifier"}},
        Case{"TheIdentifierOfAnAccountOfAnotherType",
             [](Device& device) {
               device.write(device.legacyMail(),
                            mailFile({mail("POPAccount", "same", {{"AccountName", "legacy"}})}));
               device.writeAccounts(
                   12, {account("LDAP", "LDAPAccount", "same", {{kAccountDisplayName, "stored"}})});
             },
             {"same LDAP <- legacy mail file -> in the file; saving: Type as the file had it "
              "Class as the file had it DisplayName as the file had it Type String as the file had "
              "it Short Type String as the file had it",
              "same LDAP <- accounts file -> gone: an account of the legacy mail file has its "
              "identifier"}},
        Case{"ALegacyAccountThatWasWrappedBefore",
             [](Device& device) {
               device.write(device.legacyMail(), mailFile({mail("VeltroAccount", "child")}));
               device.writeAccounts(
                   12, {account("OrvaneAccount", "VeltroAccount", "parent",
                                {{kAccountDisplayName, "Umbrella"},
                                 {kAccountChildAccounts,
                                  Array::make({account("Veltro", "VeltroAccount", "child",
                                                       {{"Port", 993}})})}})});
             },
             {"parent OrvaneAccount <- accounts file -> in the file",
              "  child Veltro <- accounts file -> in the file",
              "child Veltro <- legacy mail file -> gone: it was converted before, and stands in "
              "Umbrella"}},
        Case{"TheChildOfAnotherParent",
             [](Device& device) {
               device.write(device.legacyMail(), mailFile({mail("VeltroAccount", "child")}));
               device.writeAccounts(
                   12, {account("OrvaneAccount", "OAAccount", "parent",
                                {{kAccountChildAccounts,
                                  Array::make({account("Veltro", "VeltroAccount", "child")})}})});
             },
             {"parent OrvaneAccount <- accounts file -> in the file",
              "  child Veltro <- accounts file -> in the file",
              "child Veltro <- legacy mail file -> in the file"}},
        Case{"NoIdentifiers",
             [](Device& device) {
               device.write(device.legacyMail(),
                            mailFile({mail("MailAccount", "", {{"AccountPath", "Mail/POP-x"}})}));
               device.writeAccounts(
                   9, {account("OrvaneAccount", "OAAccount", "",
                               {{kAccountDisplayName, "Veltro"}, {"accountStatus", 2}})});
             },
             {"(new) OrvaneAccount <- accounts file -> in the file; loading: Identifier added Sync "
              "Identifier added; 9A182: DisplayName changed Type String added Short Type String "
              "added primaryAccount added Ubiquity on KeyValue on; 9B176: Pouchet on",
              "(new) Mail <- legacy mail file -> in the file; 9A182: Class changed"}},
        Case{"TwoGmailAccountsAndTheCalendarOfTheSecond",
             [](Device& device) {
               device.writeAccounts(4, {account("Mail", "GmailAccount", "first",
                                                {{kAccountUsername, "ada"}, {"IsActive", false}}),
                                        account("Mail", "GmailAccount", "second",
                                                {{kAccountUsername, "bob"},
                                                 {kAccountDisplayName, "Bob"},
                                                 {"IsActive", false}}),
                                        calDAV("calendar", "bob")});
             },
             {"first Gmail <- accounts file -> in the file; 7A242: Type changed",
              "second Gmail <- accounts file -> in the file; 7A242: Type changed Calendars on",
              "calendar CalDAV <- accounts file -> gone: folded into Bob"}},
        Case{"AMailClassThatOnlyTheFirstSaveRepairs",
             [](Device& device) {
               device.write(device.legacyMail(),
                            mailFile({mail("Odd", "odd", {{"AccountPath", "Mail/IMAP-x"}})}));
               device.writeAccounts(4, {});
             },
             {"odd Mail <- legacy mail file -> in the file; 8B117: Class changed; 8C136: Mail on"}},
        Case{"ATextOfAccounts",
             [](Device& device) {
               device.write(device.legacyMail(), Dictionary::make({{"MailAccounts", "none"}}));
               device.writeAccounts(12, {account("Mail", "POPAccount", "stored")});
             },
             {"stored Mail <- accounts file -> gone: replaced by the accounts of the legacy mail "
              "file",
              "~/Library/Mail/Accounts.plist moved aside: its \"MailAccounts\" is of the kind "
              "string, not array"}},
        Case{"ALinkToNothing",
             [](Device& device) {
               fs::create_symlink("nowhere", device.legacyMail());
               device.writeAccounts(12, {account("Mail", "POPAccount", "stored")});
             },
             {"stored Mail <- accounts file -> gone: replaced by the accounts of the legacy mail "
              "file",
              "~/Library/Mail/Accounts.plist moved aside: it is no file that can be read: No such "
              "file or directory"}},
        Case{"AFolder",
             [](Device& device) {
               fs::create_directories(device.legacyExchange() / "folder");
               device.writeAccounts(12, {account("Exchange", "ExchangeAccount", "stored")});
             },
             {"stored Exchange <- accounts file -> gone: replaced by the accounts of the legacy "
              "Exchange file",
              "~/Library/Preferences/com.orvane.Syncora.plist moved aside: it is no file that can "
              "be read: Is a directory"}},
        Case{"AFileThatAppearsInTheMiddle",
             [](Device& device) {
               device.writeAccounts(12, {account("Mail", "POPAccount", "stored")});
               device.write(device.legacyExchange(), exchangeFile("work"));
               device.atEndOf = [&device](const std::string& stage) {
                 if (stage != "accounts file") return;
                 device.write(device.legacyMail(), mailFile({mail("POPAccount", "late")}));
               };
             },
             {"stored Mail <- accounts file -> in the file",
              "work Exchange <- legacy Exchange file -> in the file",
              "~/Library/Mail/Accounts.plist kept: it came to lie there during the migration",
              "The mail file is there"}},
        Case{"AFileThatIsReplacedAfterItWasRead",
             [](Device& device) {
               device.write(device.legacyMail(), mailFile({mail("POPAccount", "pop")}));
               device.writeAccounts(12, {});
               device.atEndOf = [&device](const std::string& stage) {
                 if (stage != "saving") return;
                 fs::remove(device.legacyMail());
                 device.write(device.legacyMail(), mailFile({mail("POPAccount", "another")}));
               };
             },
             {"pop Mail <- legacy mail file -> in the file",
              "~/Library/Mail/Accounts.plist kept: another file was put in its place during the "
              "migration",
              "The mail file is there"}},
        Case{"AnAccountThatNoLoadAccepts",
             [](Device& device) {
               device.write(device.legacyMail(), mailFile({mail("Odd", "odd")}));
               device.writeAccounts(12, {});
             },
             {"odd Mail <- legacy mail file -> in the file, unusable: its class \"Odd\" is none of "
              "a mail account, and \"AccountPath\" does not tell another",
              "~/Library/Mail/Accounts.plist moved aside: it holds an account that no load "
              "accepts"}},
        Case{"AnUnsupportedProvisionedDataclass",
             [](Device& device) {
               device.writeAccounts(
                   11, {account("OrvaneAccount", "OAAccount", "primary",
                                {{"primaryAccount", true},
                                 {kAccountProvisionedDataclasses,
                                  dataclasses({"unsupported", kAccountDataclassUbiquity})}})});
             },
             {"primary OrvaneAccount <- accounts file -> in the file; 9B176: Pouchet provisioned "
              "unsupported no longer provisioned"}},
        Case{"AConversionThatFails",
             [](Device& device) {
               device.write(device.legacyMail(),
                            mailFile({mail("POPAccount", "good"), "text",
                                      Dictionary::make({{"uniqueId", "bad"}})}));
               device.writeAccounts(12, {account("Mail", "POPAccount", "stored")});
             },
             {"stored Mail <- accounts file -> in the file",
              "good Mail <- legacy mail file -> in the legacy file: another account of its file "
              "cannot be converted",
              "(none)  <- legacy mail file -> in the legacy file: it is of the kind string, not "
              "dictionary",
              "bad Mail <- legacy mail file -> in the legacy file: it has no \"Class\"",
              "~/Library/Mail/Accounts.plist kept: an account of it cannot be converted",
              "The mail file is there"}},
        Case{"RecordsThatLoadingLeavesOut",
             [](Device& device) {
               device.writeAccounts(12, {"text", account("Nonsense", "Class", "x")});
             },
             {"(none)  <- accounts file -> gone: it is of the kind string, not dictionary",
              "x Nonsense <- accounts file -> gone: there is no account type \"Nonsense\""}},
        Case{"AnInterruptedRemoval",
             [](Device& device) {
               std::ofstream(device.preferences() / ".removingOldAccounts") << "";
               fs::create_directory(device.legacyMail());
               device.writeAccounts(3, {account("Mail", "POPAccount", "stored")});
             },
             {"~/Library/Mail/Accounts.plist moved aside: it is a folder"}},
        Case{"SavesThatFailFromTheSecondOn",
             [](Device& device) {
               device.writeAccounts(6, {account("Veltro", "VeltroAccount", "hosted"),
                                        account("Mail", "POPAccount", "pop")});
               device.atEndOf = [](const std::string& stage) {
                 // Nothing more can be written to any file.
                 std::signal(SIGXFSZ, SIG_IGN);
                 rlimit limit{};
                 ::getrlimit(RLIMIT_FSIZE, &limit);
                 limit.rlim_cur = stage == "8B117" ? 0 : limit.rlim_cur;
                 if (stage == "saving") limit.rlim_cur = limit.rlim_max;
                 ::setrlimit(RLIMIT_FSIZE, &limit);
               };
             },
             {"(new) OrvaneAccount <- 8B117 -> in the file",
              "  hosted Veltro <- accounts file -> in the file; 8B117: put into Veltro",
              "pop Mail <- accounts file -> in the file as before; 8C136: Mail on",
              "the accounts file could not be replaced in the end: cannot write the new accounts "
              "file: File too large; it reads as current, although nothing of what came after "
              "8B117 is in it"}}),
    [](const auto& tested) { return tested.param.name; });

TEST(AStory, NamesAccountsThatGoForNoReasonFirst) {
  Device device;
  configureHost({device.root.string(), HostOptions::Log::Nowhere, true});
  const auto store = AccountsManager::initWithAccounsInfoArray(Array::make(
      {account("LDAP", "LDAPAccount", "stays"),
       account(
           "LDAP", "LDAPAccount", "goes",
           {{kAccountChildAccounts, Array::make({account("LDAP", "LDAPAccount", "child")})}})}));
  Story story(false);
  story.stageEnded({"first", *store, true});
  store->deleteAccountWithIdentifier("goes");
  story.stageEnded({"second", *store, true});
  testing::internal::CaptureStdout();
  EXPECT_FALSE(printStory(story, {}));
  const std::string table = testing::internal::GetCapturedStdout();
  EXPECT_LT(table.find("goes"), table.find("stays"));
  EXPECT_LT(table.find("child"), table.find("stays"));
  EXPECT_NE(table.find("3 accounts: 1 in the file (1 unchanged), 2 GONE, NO REASON TOLD"),
            std::string::npos)
      << table;
}

}  // namespace
}  // namespace tallbook::migrate
