#include "tools/tallbook/ValueText.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include "tools/common/Outcome.h"
#include "tools/tallbook/ISODate.h"
#include "tools/tallbook/JSONValue.h"

namespace tallbook::tool {
namespace {

template <class Number>
std::optional<Number> numberFromText(std::string_view text) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

/// nullopt for a text that does not spell a value of the kind.
std::optional<Value> spelledValue(const std::string& text, std::string_view kind) {
  if (kind == "string") return Value(text);
  if (kind == "boolean") {
    if (text == "true" || text == "false") return Value(text == "true");
  } else if (kind == "integer") {
    if (const auto number = numberFromText<std::int64_t>(text)) return Value(*number);
    if (const auto number = numberFromText<std::uint64_t>(text)) return Value(*number);
  } else if (kind == "real") {
    if (const auto number = numberFromText<double>(text)) return Value(*number);
  } else if (kind == "date") {
    if (const auto date = dateFromISOText(text)) return Value(*date);
    if (const auto seconds = numberFromText<double>(text)) return Value(Date{*seconds});
  } else if (kind == "data") {
    if (const auto bytes = bytesFromBase64(text)) return Value(Data(*bytes));
  } else if (kind == "uid") {
    if (const auto number = numberFromText<std::uint64_t>(text)) return Value(UID{*number});
  } else {
    const JSON json = JSON::parse(text, nullptr, false);
    if (!json.is_discarded() && !json.is_null()) return valueFromJSON(json);
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> writableKinds() {
  return {"string", "boolean", "integer", "real", "date", "data", "uid", "json"};
}

Value valueFromText(const std::string& text, std::string_view kind) {
  requireUnicode(text);
  if (auto value = spelledValue(text, kind)) return *value;
  throw Failure(ExitCode::Usage, "\"" + text + "\" spells no value of the kind " +
                                     std::string(kind) +
                                     "; spell it otherwise, or give another --type");
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
      const auto text = isoText(*value.date());
      return text ? *text : JSON(value.date()->secondsSince2001).dump();
    }
    default:
      return jsonFromValue(value).dump(2);
  }
}

std::string lineText(const Value& value) {
  return jsonFromValue(value).dump();
}

}  // namespace tallbook::tool
