// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "tallbook/ScalarText.h"

namespace tallbook {
namespace {

using namespace std::chrono;

constexpr sys_days kEpoch = 2001y / January / 1;
constexpr double kSecondsADay = 86400;

// Takes an unsigned number of at least `digits` digits off the front.
std::optional<int> takeNumber(std::string_view& text, std::size_t digits) {
  if (text.empty() || text.front() < '0' || text.front() > '9') return std::nullopt;
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const auto length = static_cast<std::size_t>(end - text.data());
  if (error != std::errc() || length < digits) return std::nullopt;
  text.remove_prefix(length);
  return number;
}

// The same after a separator.
std::optional<int> takeNumberAfter(char separator, std::string_view& text) {
  if (text.empty() || text.front() != separator) return std::nullopt;
  text.remove_prefix(1);
  return takeNumber(text, 2);
}

// A fraction of a second, where there is one.
std::optional<double> takeFraction(std::string_view& text) {
  if (text.empty() || text.front() != '.') return 0;
  double fraction = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), fraction, std::chars_format::fixed);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return fraction;
}

}  // namespace

std::optional<Date> dateFromISO8601(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const auto years = takeNumber(text, 4);
  const auto months = takeNumberAfter('-', text);
  const auto days = takeNumberAfter('-', text);
  const auto hour = takeNumberAfter('T', text);
  const auto minute = takeNumberAfter(':', text);
  const auto second = takeNumberAfter(':', text);
  const auto fraction = takeFraction(text);
  if (!years || !months || !days || !hour || !minute || !second || !fraction) return std::nullopt;
  if (text != "Z" && !text.empty()) return std::nullopt;
  if (*years > int(year::max()) || *hour > 23 || *minute > 59 || *second > 60) return std::nullopt;
  const year_month_day day(year(negative ? -*years : *years), month(unsigned(*months)),
                           std::chrono::day(unsigned(*days)));
  if (!day.ok()) return std::nullopt;
  const auto whole =
      (sys_days(day) - kEpoch).count() * 86400LL + *hour * 3600LL + *minute * 60LL + *second;
  return Date{static_cast<double>(whole) + *fraction};
}

std::string iso8601(Date date) {
  const double day = std::floor(date.secondsSince2001 / kSecondsADay);
  const sys_days first = year::min() / January / 1;
  const sys_days last = year::max() / December / 31;
  char text[64];
  if (!(day >= int((first - kEpoch).count()) && day <= int((last - kEpoch).count()))) {
    std::snprintf(text, sizeof text, "%.17g seconds since 2001", date.secondsSince2001);
    return text;
  }
  const year_month_day calendar(kEpoch + days(static_cast<int>(day)));
  const double seconds = date.secondsSince2001 - day * kSecondsADay;
  const int whole = static_cast<int>(seconds);
  const int length = std::snprintf(text, sizeof text, "%0*d-%02u-%02uT%02d:%02d:%02d",
                                   calendar.year() < year(0) ? 5 : 4, int(calendar.year()),
                                   unsigned(calendar.month()), unsigned(calendar.day()),
                                   whole / 3600, whole / 60 % 60, whole % 60);
  std::string answer(text, static_cast<std::size_t>(length));
  const long billionths = std::min(std::lround((seconds - whole) * 1e9), 999'999'999L);
  if (billionths > 0) {
    std::snprintf(text, sizeof text, ".%09ld", billionths);
    answer += text;
    answer.erase(answer.find_last_not_of('0') + 1);
  }
  return answer + "Z";
}

}  // namespace tallbook
