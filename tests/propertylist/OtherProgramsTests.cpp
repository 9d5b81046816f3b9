// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "tallbook/PropertyList.h"

#include "tests/support/Device.h"

namespace tallbook {
namespace {

int run(const std::string& command) {
  return std::system(command.c_str());
}

bool isInstalled(const std::string& program) {
  return run("command -v " + program + " >/dev/null") == 0;
}

// The values of oracle.py; without what XML or a lesser program cannot carry.
DictionaryRef values() {
  const DictionaryRef many = Dictionary::make();
  for (std::size_t n = 0; n < 300; ++n) many->set("key " + std::to_string(n), std::string(n, 'v'));
  return Dictionary::make(
      {{"text", "Grüße \U0001F600"},
       {"ints",
        Array::make({0, -1, 255, 256, 65536, 2147483648, std::numeric_limits<std::int64_t>::min(),
                     std::numeric_limits<std::int64_t>::max(),
                     std::numeric_limits<std::uint64_t>::max()})},
       {"reals", Array::make({0.5, -1e300})},
       {"dates", Array::make({Date{-63113904000}, Date{415893909}, Date{63113904000}})},
       {"data", Data(std::string_view("\0\xff", 2))},
       {"flags", Array::make({true, false})},
       {"many", many},
       {"empty", Array::make({Dictionary::make(), Array::make(), "", Data("")})}});
}

DictionaryRef allValues() {
  const DictionaryRef all = values();
  all->set("nul", std::string_view("a\0b", 3));
  all->set("uid", UID{7});
  return all;
}

class OtherPrograms : public ThrowAwayDevice {
 protected:
  std::string file() const { return path("/tmp/exchanged.plist"); }
  int oracle(const std::string& arguments) {
    return run("python3 " TALLBOOK_TEST_DATA "/oracle.py " + arguments);
  }
};

TEST_F(OtherPrograms, PlistlibReadsOurBinary) {
  if (!isInstalled("python3")) GTEST_SKIP() << "needs python3";
  test::writePropertyList(file(), allValues());
  EXPECT_EQ(oracle("check " + file()), 0);
}

TEST_F(OtherPrograms, WeReadPlistlibsBinaryAndXML) {
  if (!isInstalled("python3")) GTEST_SKIP() << "needs python3";
  ASSERT_EQ(oracle("make " + file() + " binary"), 0);
  EXPECT_EQ(test::readPropertyList(file()), Value(allValues()));
  ASSERT_EQ(oracle("make " + file() + " xml"), 0);
  EXPECT_EQ(test::readPropertyList(file()), Value(values()));
}

// It moves dates outside 1932 to 2069 and cuts strings at NUL, so neither is sent through it.
TEST_F(OtherPrograms, PlistutilConvertsOurBinaryToXMLAndBack) {
  if (!isInstalled("plistutil")) GTEST_SKIP() << "needs plistutil (package libplist-utils)";
  const DictionaryRef sent = values();
  sent->set("dates", Array::make({Date{415893909}}));
  test::writePropertyList(file(), sent);
  const std::string xml = path("/tmp/exchanged.xml");
  ASSERT_EQ(run("plistutil -i " + file() + " -f xml -o " + xml), 0);
  EXPECT_EQ(test::readPropertyList(xml), Value(sent));
  ASSERT_EQ(run("plistutil -i " + xml + " -f bin -o " + file()), 0);
  EXPECT_EQ(test::readPropertyList(file()), Value(sent));
}

}  // namespace
}  // namespace tallbook
