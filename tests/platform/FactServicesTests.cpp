// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <ctime>
#include <gmock/gmock.h>
#include <pwd.h>
#include <sys/utsname.h>

#include "platform/linux/FactServices.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/LinuxUUIDs.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using Feature = ManagementRestrictions::Feature;
using DataType = ExternalSyncSources::DataType;

/// A Linux device's own services, not those that the fixture scripts.
class ALinuxDevice : public ThrowAwayDevice {
 protected:
  void writeFacts(const std::string& name, const Value& facts) {
    test::writePropertyList(path("/etc/tallbook/" + name + ".plist"), facts);
  }

  const std::unique_ptr<Platform> device =
      makeLinuxPlatform({root() + "/.", LinuxPlatformOptions::LogSink::Nowhere});
};

TEST_F(ALinuxDevice, AnswersWithItsFallbacksWhereItHasNoFacts) {
  utsname system{};
  ASSERT_EQ(::uname(&system), 0);
  EXPECT_TRUE(
      std::string(system.machine)
          .starts_with(device->deviceInformation().answerForKey("CPUArchitecture").string().str()));
  EXPECT_TRUE(device->deviceInformation().answerForKey("DeviceClass").isNull());
  EXPECT_EQ(device->restrictions().restrictionOfFeature(Feature::PhotoStream), 0);
  EXPECT_TRUE(device->pairingRecords().valueForKey("Contacts", "domain").isNull());
  EXPECT_TRUE(device->pairingRecords().valueForKey("", "domain").isNull());
  const auto sources = device->externalSyncSources().enabledSourcesForDataType(DataType::Notes);
  EXPECT_THAT(sources.sources, IsEmpty());
  EXPECT_EQ(sources.error, "");
  EXPECT_EQ(device->hostedServiceLibrary().accountTypeDisplayString(), "Nimbrel");
  EXPECT_TRUE(device->preferences().valueForKey("Key", "com.example").isNull());
}

TEST_F(ALinuxDevice, ReadsItsFactsAfreshFromPropertyLists) {
  DeviceInformation& information = device->deviceInformation();
  for (const char* answer : {"armv6", "armv7"}) {
    writeFacts("DeviceInformation", Dictionary::make({{"CPUArchitecture", answer}}));
    EXPECT_EQ(information.answerForKey("CPUArchitecture"), Value(answer));
  }
  writeFacts("Restrictions", Dictionary::make({{"CloudDocumentSync", 2}, {"CloudBackup", 1}}));
  EXPECT_EQ(device->restrictions().restrictionOfFeature(Feature::CloudDocumentSync), 2);
  EXPECT_EQ(device->restrictions().restrictionOfFeature(Feature::CloudBackup), 1);

  const DictionaryRef record = Dictionary::make({{"SyncingOS", "Windows"}});
  const DictionaryRef domain = Dictionary::make({{"Contacts", record}});
  writeFacts("PairingRecords", Dictionary::make({{"domain", domain}}));
  EXPECT_EQ(device->pairingRecords().valueForKey("Contacts", "domain"), Value(record));
  EXPECT_EQ(device->pairingRecords().valueForKey("", "domain"), Value(domain));

  writeFacts("SyncSources", Dictionary::make({{"Bookmarks", Array::make({"of bookmarks"})},
                                              {"Calendars", Array::make({"a", 7, "b"})},
                                              {"Contacts", Array::make()},
                                              {"Notes", Array::make({"of notes"})}}));
  const auto sourcesOf = [&](DataType type) {
    return device->externalSyncSources().enabledSourcesForDataType(type).sources;
  };
  EXPECT_THAT(sourcesOf(DataType::Bookmarks), ElementsAre(String("of bookmarks")));
  EXPECT_THAT(sourcesOf(DataType::Calendars), ElementsAre(String("a"), String("b")));
  EXPECT_THAT(sourcesOf(DataType::Contacts), IsEmpty());
  EXPECT_THAT(sourcesOf(DataType::Notes), ElementsAre(String("of notes")));

  writeFacts("HostedService", Dictionary::make({{"AccountTypeDisplayString", "Cumulus"}}));
  EXPECT_EQ(device->hostedServiceLibrary().accountTypeDisplayString(), "Cumulus");

  for (const bool on : {true, false}) {
    test::writePropertyList(preferencesFolder() + "/com.example.plist",
                            Dictionary::make({{"On", on}}));
    EXPECT_EQ(device->preferences().valueForKey("On", "com.example"), Value(on));
  }
  test::writePropertyList(path("/etc/secret.plist"), Dictionary::make({{"On", true}}));
  EXPECT_TRUE(device->preferences().valueForKey("On", "../../../../etc/secret").isNull());
}

TEST_F(ALinuxDevice, TakesFactsOfTheWrongKindForAbsent) {
  const Value wrong[] = {Array::make({1}), "text",
                         Dictionary::make({{"CPUArchitecture", 6},
                                           {"CloudBackup", "2"},
                                           {"PhotoStream", ~std::uint64_t{0}},
                                           {"domain", "text"},
                                           {"Notes", 2},
                                           {"AccountTypeDisplayString", true}})};
  for (const Value& facts : wrong) {
    for (const char* name :
         {"DeviceInformation", "Restrictions", "PairingRecords", "SyncSources", "HostedService"}) {
      writeFacts(name, facts);
    }
    EXPECT_TRUE(device->deviceInformation().answerForKey("CPUArchitecture").string());
    EXPECT_EQ(device->restrictions().restrictionOfFeature(Feature::CloudBackup), 0);
    EXPECT_EQ(device->restrictions().restrictionOfFeature(Feature::PhotoStream), 0);
    EXPECT_TRUE(device->pairingRecords().valueForKey("Contacts", "domain").isNull());
    EXPECT_TRUE(device->pairingRecords().valueForKey("", "domain").isNull());
    const auto answer = device->externalSyncSources().enabledSourcesForDataType(DataType::Notes);
    EXPECT_THAT(answer.sources, IsEmpty());
    EXPECT_NE(answer.error, "") << "a daemon that cannot say is no daemon without sources";
    EXPECT_EQ(device->hostedServiceLibrary().accountTypeDisplayString(), "Nimbrel");
  }
}

TEST_F(ALinuxDevice, KnowsItsFolders) {
  WellKnownDirectories& directories = device->directories();
  EXPECT_EQ(directories.systemRoot(), root());
  EXPECT_EQ(directories.mobileHome(), home());
  EXPECT_EQ(directories.sharedResources(), home());
  EXPECT_EQ(directories.mailData(), home() + "/Library/Mail");
  for (const char* own : {"", "/", "//"}) {
    EXPECT_EQ(makeLinuxPlatform({own})->directories().systemRoot(), "");
  }
}

// Without a root they are those of the machine around, which may have no such account.
TEST(ARunningSystem, HasItsUsersHomeWhereTheAccountDatabasePutsIt) {
  const passwd* const mobile = ::getpwnam("mobile");
  const std::string home = mobile ? mobile->pw_dir : "/var/mobile";
  if (home.size() < 2 || home.front() != '/' || home.back() == '/') {
    GTEST_SKIP() << "the home of this machine's \"mobile\" is no path of a folder: " << home;
  }
  const auto platform = makeLinuxPlatform({"", LinuxPlatformOptions::LogSink::Nowhere});
  EXPECT_EQ(platform->directories().mobileHome(), home);
}

TEST(UUIDs, AreRandomAndInUpperCase) {
  LinuxUUIDs uuids;
  const std::string first = uuids.newUUID().str();
  EXPECT_THAT(first, MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-"
                                  "[0-9A-F]{12}"));
  EXPECT_NE(uuids.newUUID().str(), first);
}

TEST(TheClock, TellsTheLocalDateAndTime) {
  // A time that is nobody's, and is never put back.
  ::setenv("TZ", "ABC-5:45", 1);
  ::tzset();
  const std::time_t before = std::time(nullptr);
  const LocalTime now = LinuxClock().now();
  std::tm local{};
  local.tm_year = now.year - 1900;
  local.tm_mon = now.month - 1;
  local.tm_mday = now.day;
  local.tm_hour = now.hour;
  local.tm_min = now.minute;
  local.tm_sec = now.second;
  local.tm_isdst = -1;
  const std::time_t read = std::mktime(&local);
  EXPECT_GE(read, before);
  EXPECT_LE(read, std::time(nullptr));
  ::unsetenv("TZ");
  ::tzset();
}

}  // namespace
}  // namespace tallbook
