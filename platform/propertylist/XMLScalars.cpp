// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/XMLScalars.h"

#include <charconv>

#include "tallbook/ScalarText.h"

#include "platform/propertylist/MalformedPropertyList.h"

namespace tallbook {
namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";
std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

}  // namespace

Value integerFromXML(std::string_view text) {
  if (auto integer = integerFromText(trimmed(text))) return *std::move(integer);
  throw MalformedPropertyList("an integer that is not a 64-bit number");
}

Value realFromXML(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  double real = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, real);
  if (error == std::errc() && stop == end) return real;
  throw MalformedPropertyList("a real that is no number");
}

Value dateFromXML(std::string_view text) {
  if (const auto date = dateFromISO8601(trimmed(text))) return *date;
  throw MalformedPropertyList("a date that is not ISO 8601");
}

Value dataFromXML(std::string_view text) {
  if (const auto bytes = bytesFromBase64(text)) return Data(*bytes);
  throw MalformedPropertyList("data that is not base 64");
}

}  // namespace tallbook
