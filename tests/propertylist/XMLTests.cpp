// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cmath>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "tallbook/PropertyList.h"

namespace tallbook {
namespace {

std::string document(std::string_view inside) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" +
         std::string(inside) + "</plist>\n";
}

TEST(TheXMLReader, ReadsEveryKind) {
  const std::pair<const char*, Value> rows[] = {
      {"<string>a &amp; &#x20ac; <![CDATA[<b>]]></string>", "a & € <b>"},
      {"<string/>", ""},
      {"<true/>", true},
      {"<false/>", false},
      {"<integer> -9223372036854775808 </integer>", std::numeric_limits<std::int64_t>::min()},
      {"<integer>18446744073709551615</integer>", std::numeric_limits<std::uint64_t>::max()},
      {"<integer>0xFf</integer>", 255},
      {"<real>-1.5e3</real>", -1500.0},
      {"<real>+infinity</real>", std::numeric_limits<double>::infinity()},
      {"<date>2001-01-01T00:00:01Z</date>", Date{1}},
      {"<date>0001-01-01T00:00:00Z</date>", Date{-63113904000}},
      {"<date>4001-01-01T00:00:00Z</date>", Date{63113904000}},
      {"<data> A P\n8= </data>", Data(std::string_view("\0\xff", 2))},
      {"<data></data>", Data("")},
      {"<data>YWJj</data>", Data("abc")},
      {"<data>YQ==</data>", Data("a")},
      {"<data>+/Z6</data>", Data("\xfb\xf6z")},
      {" <array> <!-- c --> <true/> </array> ", Array::make({true})},
      {"<dict><key>b</key><dict/><key>a</key><array/></dict>",
       Dictionary::make({{"b", Dictionary::make()}, {"a", Array::make()}})},
  };
  for (const auto& [inside, expected] : rows) {
    std::string problem;
    const auto value = propertyListFromBytes(document(inside), &problem);
    ASSERT_TRUE(value) << inside << ": " << problem;
    EXPECT_EQ(*value, expected) << inside << " read as " << value->description();
  }
}

TEST(TheXMLWriter, WritesWhatTheReaderReads) {
  const Value values[] = {"a & \xe2\x82\xac <b> ]]>\r\n\t",
                          Array::make({}),
                          Dictionary::make(),
                          true,
                          -7,
                          std::numeric_limits<std::uint64_t>::max(),
                          0.1,
                          -std::numeric_limits<double>::infinity(),
                          Date{-63113904000},
                          Data(std::string_view("\0\xff", 2))};
  DictionaryRef all =
      Dictionary::make({{"k <", Array::make({std::begin(values), std::end(values)})}});
  const auto written = xmlPropertyList(all);
  ASSERT_TRUE(written);
  EXPECT_EQ(propertyListFromBytes(written->text), Value(all));
  EXPECT_FALSE(written->hasShortenedDates);
  EXPECT_TRUE(xmlPropertyList(Date{0.5})->hasShortenedDates);
}

TEST(TheXMLWriter, NamesThePlaceOfWhatItRefuses) {
  Value deep = Array::make();
  for (int level = 0; level < kMaximumNesting; ++level) deep = Array::make({deep});
  for (const Value& value : {Value("\x01"), Value("\xff"), Value("\xef\xbf\xbf"), Value(),
                             Value(UID{1}), Value(Date{252'423'993'600}), Value(Date{NAN}), deep}) {
    std::string problem;
    EXPECT_FALSE(xmlPropertyList(Dictionary::make({{"a", Array::make({0, value})}}), &problem));
    EXPECT_TRUE(problem.starts_with("a[1]")) << problem;
  }
}

TEST(TheXMLReader, RefusesWhatIsNoPropertyList) {
  std::string deep;
  for (int level = 0; level < 200'000; ++level) deep += "<array>";
  const std::string rows[] = {
      "no XML at all",
      "<dict/>",
      document(""),
      document("<true/><false/>"),
      document(deep),
      document("<dict><key>a</key></dict>"),
      document("<dict><true/></dict>"),
      document("<dict><key>a</key><key>b</key></dict>"),
      document("<array><key>a</key></array>"),
      document("<string>a<true/></string>"),
      document("<array>text</array>"),
      document("<integer>9223372036854775809x</integer>"),
      document("<integer>18446744073709551616</integer>"),
      document("<integer>-9223372036854775809</integer>"),
      document("<integer/>"),
      document("<real>one</real>"),
      document("<date>2001-02-30T00:00:00Z</date>"),
      document("<date>yesterday</date>"),
      document("<data>!</data>"),
      document("<data>YQ==YQ==</data>"),
      document("<data>YWJjZ</data>"),
      document("<set/>"),
      document("<true/>").substr(0, 60),
      document("<plist><true/></plist>"),
      document("<true/><plist/>"),
      "<!DOCTYPE plist [<!ENTITY a \"aaaa\">]><plist><string>&a;</string></plist>",
      "<!DOCTYPE plist [<!ENTITY % a SYSTEM \"file:///etc/passwd\">]><plist><true/></plist>",
      "<!DOCTYPE plist SYSTEM \"x.dtd\"><plist><string>a&eacute;b</string></plist>",
  };
  for (const std::string& bytes : rows) {
    std::string problem;
    EXPECT_FALSE(propertyListFromBytes(bytes, &problem)) << bytes.substr(0, 120);
    EXPECT_FALSE(problem.empty()) << bytes.substr(0, 120);
  }
}

TEST(TheXMLReader, TakesOtherEncodingsAndAPublicDoctype) {
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><!DOCTYPE plist PUBLIC \"-//X//Y//EN\" "
      "\"http://nowhere.example/x.dtd\"><plist><string>\xe9</string></plist>";
  EXPECT_EQ(propertyListFromBytes(text), Value("é"));
}

// Text is handed over as it comes. What the parser must see to its end before it can go on takes
// many times as long, unless it comes whole.
TEST(TheXMLReader, ReadsALongCommentAtLeastAsFastAsText) {
  const std::string filling(std::size_t{64} << 20, 'x');
  const auto taken = [](const std::string& inside) {
    const std::clock_t start = std::clock();
    EXPECT_TRUE(propertyListFromBytes(document(inside)));
    return std::clock() - start;
  };
  EXPECT_LT(taken("<true/><!--" + filling + "-->"), 2 * taken("<string>" + filling + "</string>"));
}

}  // namespace
}  // namespace tallbook
