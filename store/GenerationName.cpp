// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/GenerationName.h"

#include <charconv>
#include <cstdio>

namespace tallbook {
namespace {

using namespace std::chrono;

constexpr std::string_view kPattern = "0000-00-00T00-00-00.000000000Z";
constexpr std::string_view kMigration = "-migration";
// Nanoseconds in 64 bits end in the year 2262.
constexpr int kFirstYear = 1900;
constexpr int kLastYear = 2261;

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

bool fitsPattern(std::string_view text) {
  if (text.size() != kPattern.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kPattern[i] == '0' ? !isDigit(text[i]) : text[i] != kPattern[i]) return false;
  }
  return true;
}

/// The number in these digits.
int number(std::string_view text, std::size_t at, std::size_t digits) {
  int result = 0;
  std::from_chars(text.data() + at, text.data() + at + digits, result);
  return result;
}

}  // namespace

std::optional<GenerationName> GenerationName::parse(std::string_view text) {
  GenerationName name;
  name.isOfMigration = text.ends_with(kMigration);
  if (name.isOfMigration) text.remove_suffix(kMigration.size());
  if (!fitsPattern(text)) return std::nullopt;
  const year_month_day date{year(number(text, 0, 4)),
                            month(static_cast<unsigned>(number(text, 5, 2))),
                            day(static_cast<unsigned>(number(text, 8, 2)))};
  const int hour = number(text, 11, 2);
  const int minute = number(text, 14, 2);
  const int second = number(text, 17, 2);
  if (!date.ok() || date.year() < year(kFirstYear) || date.year() > year(kLastYear)) {
    return std::nullopt;
  }
  if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  name.kept = sys_days(date) + hours(hour) + minutes(minute) + seconds(second) +
              nanoseconds(number(text, 20, 9));
  return name;
}

std::string GenerationName::text() const {
  const auto midnight = floor<days>(kept);
  const year_month_day date(midnight);
  const hh_mm_ss time(kept - midnight);
  char text[64];
  std::snprintf(
      text, sizeof text, "%04d-%02u-%02uT%02d-%02d-%02d.%09dZ%s", int(date.year()),
      unsigned(date.month()), unsigned(date.day()), static_cast<int>(time.hours().count()),
      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
      static_cast<int>(time.subseconds().count()), isOfMigration ? kMigration.data() : "");
  return text;
}

}  // namespace tallbook
