// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/JSONValue.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tallbook/ScalarText.h"

#include "tools/common/Outcome.h"

namespace tallbook::tool {
namespace {

JSON tagged(const char* tag, JSON content) {
  JSON object = JSON::object();
  object[tag] = std::move(content);
  return object;
}

/// A real that is no number keeps its bits, since there are many of them.
JSON jsonFromReal(double real) {
  if (std::isfinite(real)) return real;
  char bits[32];
  std::snprintf(bits, sizeof bits, "%016llx",
                static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(real)));
  if (std::isinf(real)) return tagged("$real", real < 0 ? "-inf" : "inf");
  return tagged("$real", "nan:" + std::string(bits));
}

std::optional<double> realFromName(std::string_view name) {
  if (name == "inf") return HUGE_VAL;
  if (name == "-inf") return -HUGE_VAL;
  if (name == "nan") return std::nan("");
  if (!name.starts_with("nan:") || name.size() != 20) return std::nullopt;
  std::uint64_t bits = 0;
  const auto [stop, error] = std::from_chars(name.data() + 4, name.data() + 20, bits, 16);
  const double real = std::bit_cast<double>(bits);
  if (error != std::errc() || stop != name.data() + 20 || !std::isnan(real)) return std::nullopt;
  return real;
}

JSON jsonFromDate(Date date) {
  const std::string text = iso8601(date);
  const auto again = dateFromISO8601(text);
  if (again && Value(*again) == Value(date)) return tagged("$date", text);
  return tagged("$date", jsonFromReal(date.secondsSince2001));
}

JSON jsonFromDictionary(const DictionaryRef& dictionary) {
  JSON object = JSON::object();
  auto& members = object.get_ref<JSON::object_t&>();
  // Their keys are not looked for, which takes longer the more there are.
  for (const auto& [key, value] : dictionary) members.emplace_back(key.str(), jsonFromValue(value));
  const bool looksTagged = object.size() == 1 && object.begin().key().starts_with('$');
  return looksTagged ? tagged("$dictionary", std::move(object)) : object;
}

Value valueAtDepth(const JSON& json, int depth);

Value dictionaryFromJSON(const JSON& object, int depth) {
  DictionaryRef dictionary = Dictionary::make();
  for (const auto& [key, value] : object.items()) {
    dictionary->set(key, valueAtDepth(value, depth + 1));
  }
  return dictionary;
}

std::optional<Value> valueFromTag(const std::string& tag, const JSON& content, int depth) {
  if (tag == "$dictionary" && content.is_object()) return dictionaryFromJSON(content, depth);
  if (tag == "$uid" && content.is_number_unsigned()) {
    return Value(UID{content.get<std::uint64_t>()});
  }
  if (tag == "$date" && content.is_string()) {
    if (const auto date = dateFromISO8601(content.get<std::string>())) return Value(*date);
  } else if (tag == "$date") {
    const Value seconds = valueAtDepth(content, depth + 1);
    if (seconds.kind() == Value::Kind::Real || seconds.kind() == Value::Kind::Integer) {
      return Value(Date{seconds.realValue()});
    }
  } else if (tag == "$data" && content.is_string()) {
    if (const auto bytes = bytesFromBase64(content.get<std::string>())) return Value(Data(*bytes));
  } else if (tag == "$real" && content.is_string()) {
    if (const auto real = realFromName(content.get<std::string>())) return Value(*real);
  }
  return std::nullopt;
}

Value valueAtDepth(const JSON& json, int depth) {
  if (depth > kMaximumNesting) {
    throw Failure(ExitCode::Usage, "the value is nested deeper than an accounts file can hold");
  }
  switch (json.type()) {
    case JSON::value_t::boolean:
      return json.get<bool>();
    case JSON::value_t::number_integer:
      return json.get<std::int64_t>();
    case JSON::value_t::number_unsigned:
      return json.get<std::uint64_t>();
    case JSON::value_t::number_float:
      return json.get<double>();
    case JSON::value_t::string:
      return json.get_ref<const std::string&>();
    case JSON::value_t::array: {
      ArrayRef array = Array::make();
      for (const JSON& element : json) array->append(valueAtDepth(element, depth + 1));
      return array;
    }
    case JSON::value_t::object: {
      if (json.size() != 1 || !json.begin().key().starts_with('$')) {
        return dictionaryFromJSON(json, depth);
      }
      const std::string& tag = json.begin().key();
      if (auto value = valueFromTag(tag, json.begin().value(), depth)) return *value;
      throw Failure(ExitCode::Usage,
                    "\"" + tag + "\" is no tag of a value, or its content does not fit it");
    }
    default:
      return nullptr;
  }
}

/// Builds what nlohmann's own reader builds, but for what that takes for something else than was
/// written: a long integer for a real, and of two values with one key the later one. It also looks
/// for a key among all that an object has, which takes longer the more there are.
class Reader final : public nlohmann::json_sax<JSON> {
 public:
  explicit Reader(JSON& root) : _root(root) {}

  bool null() override { return add(nullptr); }
  bool boolean(bool boolean) override { return add(boolean); }
  bool number_integer(std::int64_t number) override { return add(number); }
  bool number_unsigned(std::uint64_t number) override { return add(number); }
  bool number_float(double real, const std::string& text) override {
    if (text.find_first_of(".eE") != text.npos) return add(real);
    throw Failure(ExitCode::Usage, "no integer from -2^63 to 2^64-1: " + text);
  }
  bool string(std::string& text) override { return add(std::move(text)); }
  /// Text has no such value.
  bool binary(JSON::binary_t&) override { return false; }
  bool start_array(std::size_t) override { return open(JSON::array()); }
  bool end_array() override { return close(); }
  bool start_object(std::size_t) override {
    _keys.emplace_back();
    return open(JSON::object());
  }
  bool key(std::string& name) override {
    if (!_keys.back().insert(name).second) {
      throw Failure(ExitCode::Usage, "the key \"" + name + "\" is twice in one dictionary");
    }
    _key = std::move(name);
    return true;
  }
  bool end_object() override {
    _keys.pop_back();
    return close();
  }
  bool parse_error(std::size_t, const std::string&, const JSON::exception& error) override {
    const std::string_view what = error.what();
    // Without the exception's name before it.
    throw Failure(ExitCode::Usage, "no JSON: " + std::string(what.substr(what.find("] ") + 2)));
  }

 private:
  /// Where it stays until what it is in gets another element, after it was closed.
  JSON& place(JSON value) {
    if (_open.empty()) return _root = std::move(value);
    JSON& container = *_open.back();
    if (container.is_object()) {
      auto& members = container.get_ref<JSON::object_t&>();
      return members.emplace_back(std::move(_key), std::move(value)).second;
    }
    container.push_back(std::move(value));
    return container.back();
  }
  bool add(JSON value) {
    place(std::move(value));
    return true;
  }
  bool open(JSON container) {
    _open.push_back(&place(std::move(container)));
    return true;
  }
  bool close() {
    _open.pop_back();
    return true;
  }

  JSON& _root;
  std::vector<JSON*> _open;
  std::vector<std::set<std::string>> _keys;  ///< of the objects that are open
  std::string _key;                          ///< of the value that comes next
};

}  // namespace

JSON jsonFromText(std::string_view text) {
  JSON json;
  Reader reader(json);
  JSON::sax_parse(text, &reader);
  return json;
}

JSON jsonFromValue(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::Null:
      return nullptr;
    case Value::Kind::Boolean:
      return value.boolValue();
    case Value::Kind::Integer:
      return value.isBeyondSigned() ? JSON(value.unsignedValue()) : JSON(value.integerValue());
    case Value::Kind::Real:
      return jsonFromReal(value.realValue());
    case Value::Kind::Date:
      return jsonFromDate(*value.date());
    case Value::Kind::UID:
      return tagged("$uid", value.uid()->value);
    case Value::Kind::String:
      return value.string().str();
    case Value::Kind::Data:
      return tagged("$data", base64(value.data()->bytes()));
    case Value::Kind::Array: {
      JSON array = JSON::array();
      for (const Value& element : value.array()) array.push_back(jsonFromValue(element));
      return array;
    }
    case Value::Kind::Dictionary:
      return jsonFromDictionary(value.dictionary());
  }
  return nullptr;
}

Value valueFromJSON(const JSON& json) {
  return valueAtDepth(json, 1);
}

}  // namespace tallbook::tool
