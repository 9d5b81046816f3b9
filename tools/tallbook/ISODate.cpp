#include "tools/tallbook/ISODate.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace tallbook::tool {
namespace {

using std::chrono::sys_days;

constexpr sys_days kEpoch = std::chrono::year(2001) / 1 / 1;
constexpr double kSecondsADay = 86400;

/// Takes what it is asked for off the front of a text.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : _rest(text) {}

  bool skip(char expected) {
    if (!_rest.starts_with(expected)) return false;
    _rest.remove_prefix(1);
    return true;
  }
  /// Exactly `digits` digits.
  std::optional<unsigned> number(std::size_t digits) {
    unsigned result = 0;
    if (_rest.size() < digits) return std::nullopt;
    const char* end = _rest.data() + digits;
    const auto [stop, error] = std::from_chars(_rest.data(), end, result);
    if (error != std::errc() || stop != end) return std::nullopt;
    _rest.remove_prefix(digits);
    return result;
  }
  /// A point and digits, 0 where there is none.
  std::optional<double> fraction() {
    if (!_rest.starts_with('.')) return 0;
    double result = 0;
    const auto [stop, error] = std::from_chars(_rest.data(), _rest.data() + _rest.size(), result,
                                               std::chars_format::fixed);
    if (error != std::errc()) return std::nullopt;
    _rest.remove_prefix(static_cast<std::size_t>(stop - _rest.data()));
    return result;
  }
  bool atEnd() const { return _rest.empty(); }

 private:
  std::string_view _rest;
};

}  // namespace

std::optional<std::string> isoTextOfWholeSecond(Date date) {
  const double whole = std::floor(date.secondsSince2001);
  const double day = std::floor(whole / kSecondsADay);
  if (!std::isfinite(day) || std::abs(day) > 4'000'000) return std::nullopt;
  const std::chrono::year_month_day calendar =
      kEpoch + std::chrono::days(static_cast<std::int64_t>(day));
  const int year = static_cast<int>(calendar.year());
  if (year < 1 || year > 9999) return std::nullopt;
  const auto second = static_cast<unsigned>(whole - day * kSecondsADay);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02u:%02u:%02uZ", year,
                static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                second / 3600, second / 60 % 60, second % 60);
  return text;
}

std::optional<std::string> isoText(Date date) {
  std::optional<std::string> text = isoTextOfWholeSecond(date);
  if (!text) return std::nullopt;
  const double fraction = date.secondsSince2001 - std::floor(date.secondsSince2001);
  if (fraction != 0) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%.9f", fraction);
    std::string shown = digits + 1;  // without the 0 before the point
    shown.erase(shown.find_last_not_of('0') + 1);
    text->replace(text->size() - 1, 1, shown + "Z");
  }
  const std::optional<Date> again = dateFromISOText(*text);
  if (!again || Value(*again) != Value(date)) return std::nullopt;
  return text;
}

std::optional<Date> dateFromISOText(std::string_view text) {
  Scanner scanner(text);
  const auto year = scanner.number(4);
  if (!year || !scanner.skip('-')) return std::nullopt;
  const auto month = scanner.number(2);
  if (!month || !scanner.skip('-')) return std::nullopt;
  const auto day = scanner.number(2);
  if (!day) return std::nullopt;
  const std::chrono::year_month_day calendar(std::chrono::year(static_cast<int>(*year)),
                                             std::chrono::month(*month), std::chrono::day(*day));
  if (!calendar.ok()) return std::nullopt;
  const double midnight = static_cast<double>((sys_days(calendar) - kEpoch).count()) * kSecondsADay;
  if (scanner.atEnd()) return Date{midnight};

  if (!scanner.skip('T')) return std::nullopt;
  const auto hour = scanner.number(2);
  if (!hour || *hour > 23 || !scanner.skip(':')) return std::nullopt;
  const auto minute = scanner.number(2);
  if (!minute || *minute > 59 || !scanner.skip(':')) return std::nullopt;
  const auto second = scanner.number(2);
  if (!second || *second > 59) return std::nullopt;
  const auto fraction = scanner.fraction();
  if (!fraction || !scanner.skip('Z') || !scanner.atEnd()) return std::nullopt;
  return Date{midnight + *hour * 3600.0 + *minute * 60.0 + *second + *fraction};
}

}  // namespace tallbook::tool
