// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

#include "platform/linux/LinuxResourceBundle.h"
#include "platform/linux/UserLanguages.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

class AResourceBundle : public ThrowAwayDevice {
 protected:
  const DeviceRoot device{root()};

  void writeTable(const std::string& language, const Value& texts) {
    test::writePropertyList(path("/shipped/" + language + "/Table.strings"), texts);
  }
  std::string text(std::string_view key, std::string_view defaultText = "") {
    return LinuxResourceBundle(device, {path("/device"), path("/shipped")})
        .localizedString(key, "Table", defaultText);
  }
};

TEST_F(AResourceBundle, FindsTheDevicesOwnResourceBeforeTheShippedOne) {
  test::writeFile(path("/shipped/A.plist"), "");
  test::writeFile(path("/shipped/B.plist"), "");
  test::writeFile(path("/device/B.plist"), "");
  test::writeFile(path("/device/A.plist/not-a-file"), "");
  const LinuxResourceBundle bundle(device, {path("/device"), path("/shipped")});
  EXPECT_EQ(bundle.pathForResource("A", "plist"), path("/shipped/A.plist"));
  EXPECT_EQ(bundle.pathForResource("B", "plist"), path("/device/B.plist"));
  EXPECT_EQ(bundle.pathForResource("C", "plist"), std::nullopt);
}

TEST_F(AResourceBundle, SpeaksTheUsersLanguageAndEnglishWhereItCannot) {
  writeTable("en", Dictionary::make({{"YES", "Yes"}, {"NO", "No"}, {"PERHAPS", "Perhaps"}}));
  writeTable("de", Dictionary::make({{"YES", "Ja"}, {"NO", "Nein"}, {"PERHAPS", 3}}));
  writeTable("de_AT", Dictionary::make({{"YES", "Jo"}}));
  test::writeFile(path("/shipped/fr/Table.strings"), "no property list");
  const struct {
    const char *locale, *yes, *no;
  } cases[] = {
      {"de_AT.UTF-8", "Jo", "Nein"}, {"de_CH@euro", "Ja", "Nein"}, {"de", "Ja", "Nein"},
      {"sv_SE.UTF-8", "Yes", "No"},  {"fr", "Yes", "No"},          {"C.UTF-8", "Yes", "No"},
      {"POSIX", "Yes", "No"},        {"../de", "Yes", "No"},       {"es_419", "Yes", "No"}};
  for (const auto& [locale, yes, no] : cases) {
    speak(locale);
    EXPECT_EQ(text("YES"), yes) << locale;
    EXPECT_EQ(text("NO"), no) << locale;
    EXPECT_EQ(text("PERHAPS"), "Perhaps") << locale;
  }
  EXPECT_EQ(text("MISSING"), "MISSING");
  EXPECT_EQ(text("MISSING", "default"), "default");
}

TEST_F(AResourceBundle, TakesTheFirstLocaleThatIsSet) {
  ::setenv("LC_ALL", "", 1);
  ::setenv("LC_MESSAGES", "de_AT", 1);
  ::setenv("LANG", "sv", 1);
  EXPECT_EQ(userLanguages(), (std::vector<std::string>{"de_AT", "de"}));
  ::unsetenv("LC_MESSAGES");
  EXPECT_EQ(userLanguages(), std::vector<std::string>{"sv"});
  speak("ja_JP.eucJP");
  EXPECT_EQ(userLanguages(), (std::vector<std::string>{"ja_JP", "ja"}));
  ::setenv("LANGUAGE", "de_AT:de:sv.UTF-8::C:fr", 1);
  EXPECT_EQ(userLanguages(), (std::vector<std::string>{"de_AT", "de", "sv"}));
  ::setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(userLanguages(), std::vector<std::string>{});
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) ::unsetenv(variable);
  EXPECT_EQ(userLanguages(), std::vector<std::string>{});
}

TEST_F(AResourceBundle, IsFoundFromTheLibrarysOwnPlace) {
  // The objects under test are part of this program instead of a library.
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_TRUE(std::filesystem::equivalent(LinuxResourceBundle::folderOfThisLibrary(),
                                          program.parent_path() / TALLBOOK_RESOURCES_FROM_LIBRARY));
}

}  // namespace
}  // namespace tallbook
