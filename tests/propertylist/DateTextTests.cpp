// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "tallbook/ScalarText.h"

namespace tallbook {
namespace {

TEST(ADateAsText, IsReadAsItIsWritten) {
  const std::pair<double, const char*> rows[] = {
      {0, "2001-01-01T00:00:00Z"},
      {-1, "2000-12-31T23:59:59Z"},
      {0.25, "2001-01-01T00:00:00.25Z"},
      {-0.5, "2000-12-31T23:59:59.5Z"},
      {1e-9, "2001-01-01T00:00:00.000000001Z"},
      {-63'114'076'800, "0000-12-30T00:00:00Z"},
      {-63'145'526'400, "0000-01-01T00:00:00Z"},
      {-63'145'526'401, "-0001-12-31T23:59:59Z"},
      {252'423'993'599, "9999-12-31T23:59:59Z"},
      {252'423'993'600, "10000-01-01T00:00:00Z"},
  };
  for (const auto& [seconds, text] : rows) {
    EXPECT_EQ(iso8601(Date{seconds}), text);
    const auto date = dateFromISO8601(text);
    ASSERT_TRUE(date) << text;
    EXPECT_EQ(date->secondsSince2001, seconds) << text;
  }
  EXPECT_EQ(dateFromISO8601("+2001-01-01T00:00:60")->secondsSince2001, 60) << "without the Z";
}

TEST(ADateAsText, IsANumberWhereTheCalendarHasNoYearForIt) {
  EXPECT_EQ(iso8601(Date{1e15}), "1000000000000000 seconds since 2001");
  EXPECT_EQ(iso8601(Date{-1e15}), "-1000000000000000 seconds since 2001");
  for (const double none : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    EXPECT_TRUE(iso8601(Date{none}).ends_with(" seconds since 2001"));
  }
}

TEST(ADateAsText, IsRefusedWhereAnythingIsMissingOrTooMuch) {
  for (const char* text : {"",
                           "-",
                           "2001",
                           "201-01-01T00:00:00Z",
                           "2001-1-01T00:00:00Z",
                           "2001/01/01T00:00:00Z",
                           "2001-01-01 00:00:00Z",
                           "2001-01-01T00:00Z",
                           "2001-01-01T00:00:0Z",
                           "2001-01-01T24:00:00Z",
                           "2001-01-01T00:60:00Z",
                           "2001-01-01T00:00:61Z",
                           "2001-02-29T00:00:00Z",
                           "2001-13-01T00:00:00Z",
                           "2001-00-01T00:00:00Z",
                           "2001-01-00T00:00:00Z",
                           "2001-01-01T00:00:00z",
                           "2001-01-01T00:00:00ZZ",
                           "2001-01-01T00:00:00.Z",
                           "2001-01-01T00:00:00.x",
                           "99999999999-01-01T00:00:00Z",
                           "40000-01-01T00:00:00Z",
                           "20x1-01-01T00:00:00Z",
                           "x001-01-01T00:00:00Z"}) {
    EXPECT_FALSE(dateFromISO8601(text)) << text;
  }
}

}  // namespace
}  // namespace tallbook
