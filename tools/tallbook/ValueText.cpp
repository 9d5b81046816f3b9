// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/ValueText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "tallbook/ScalarText.h"

#include "tools/common/Outcome.h"
#include "tools/tallbook/JSONValue.h"

namespace tallbook::tool {
namespace {

struct Spelling {
  const char* kind;
  const char* how;
};

constexpr std::array kSpellings{
    Spelling{"string", "as it stands, in UTF-8"},
    Spelling{"boolean", "true, false, yes, no, on or off"},
    Spelling{"integer", "in decimal, or hexadecimal as 0x1F, from -2^63 to 2^64-1"},
    Spelling{"real", "in decimal, as 0.5 or 1e-3"},
    Spelling{"date",
             "2026-01-31T12:00:00Z, 2026-01-31T13:00:00+01:00, 2026-01-31, or the seconds since "
             "2001-01-01"},
    Spelling{"data", "in base64"},
    Spelling{"uid", "as a number, in decimal or hexadecimal"},
    Spelling{"json", R"(as JSON, as 5, "text", [1, 2], {"a": true} or {"$data": "AP8="})"},
};

std::optional<double> realFromText(std::string_view text) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

/// A day alone is its midnight in UTC; a time may have an offset of a time zone.
std::optional<Date> dateFromText(const std::string& text) {
  constexpr std::size_t kDay = std::string_view("2026-01-31").size();
  constexpr std::size_t kOffset = std::string_view("+01:00").size();
  if (text.size() == kDay) return dateFromISO8601(text + "T00:00:00Z");
  const std::size_t sign = text.size() < kDay + kOffset ? 0 : text.size() - kOffset;
  if (sign == 0 || (text[sign] != '+' && text[sign] != '-')) return dateFromISO8601(text);
  // The offset is a time of the first day there is.
  const auto offset = dateFromISO8601("2001-01-01T" + text.substr(sign + 1) + ":00Z");
  auto date = dateFromISO8601(text.substr(0, sign) + "Z");
  if (!offset || !date) return std::nullopt;
  date->secondsSince2001 -= (text[sign] == '+' ? 1 : -1) * offset->secondsSince2001;
  return date;
}

std::optional<Value> booleanFromText(std::string_view text) {
  if (text == "true" || text == "yes" || text == "on") return Value(true);
  if (text == "false" || text == "no" || text == "off") return Value(false);
  return std::nullopt;
}

/// nullopt for a text that does not spell a value of the kind.
std::optional<Value> spelledValue(const std::string& text, std::string_view kind) {
  if (kind == "string") return Value(text);
  if (kind == "boolean") return booleanFromText(text);
  if (kind == "integer") return integerFromText(text);
  if (kind == "real") {
    if (const auto number = realFromText(text)) return Value(*number);
  } else if (kind == "date") {
    if (const auto date = dateFromText(text)) return Value(*date);
    if (const auto seconds = realFromText(text)) return Value(Date{*seconds});
  } else if (kind == "data") {
    if (const auto bytes = bytesFromBase64(text)) return Value(Data(*bytes));
  } else if (kind == "uid") {
    const auto number = text.starts_with('-') ? std::nullopt : integerFromText(text);
    if (number) return Value(UID{number->unsignedValue()});
  } else {
    const JSON json = jsonFromText(text);
    if (!json.is_null()) return valueFromJSON(json);
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> writableKinds() {
  std::vector<std::string> kinds;
  kinds.reserve(kSpellings.size());
  for (const Spelling& spelling : kSpellings) kinds.emplace_back(spelling.kind);
  return kinds;
}

Value valueFromText(const std::string& text, std::string_view kind) {
  requireUnicode(text);
  if (auto value = spelledValue(text, kind)) return *std::move(value);
  const auto* const spelling = std::ranges::find(kSpellings, kind, &Spelling::kind);
  throw Failure(ExitCode::Usage, "\"" + text + "\" is no value of the kind " + std::string(kind) +
                                     ", which is spelled " + spelling->how +
                                     "; --type names another kind");
}

std::string_view kindThatTextLooksLike(const std::string& text) {
  for (const std::string_view kind : {"boolean", "integer", "real"}) {
    if (spelledValue(text, kind)) return kind;
  }
  return "string";
}

void requireUnicode(const std::string& text) {
  try {
    static_cast<void>(JSON(text).dump());
  } catch (const JSON::type_error&) {
    throw Failure(ExitCode::Usage,
                  "the text is not UTF-8, which an accounts file cannot hold; give it as data");
  }
}

std::string plainText(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::String:
      return value.string().str();
    case Value::Kind::Data:
      return base64(value.data()->bytes());
    case Value::Kind::UID:
      return std::to_string(value.uid()->value);
    case Value::Kind::Date: {
      const JSON date = jsonFromValue(value).front();
      return date.is_string() ? date.get<std::string>() : date.dump();
    }
    default:
      return jsonFromValue(value).dump(2);
  }
}

std::string lineText(const Value& value) {
  return jsonFromValue(value).dump();
}

}  // namespace tallbook::tool
