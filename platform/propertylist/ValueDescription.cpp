#include <array>
#include <charconv>
#include <string>
#include <utility>

#include "tallbook/Value.h"

#include "platform/propertylist/CivilTime.h"

namespace tallbook {
namespace {

// One line whatever the text holds: quotes, backslashes and control characters are escaped.
void appendQuoted(std::string& out, std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  out += '"';
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '"' || character == '\\') {
      out += '\\';
      out += character;
    } else if (byte < 0x20 || byte == 0x7f) {
      out += "\\x";
      out += kHex[byte >> 4];
      out += kHex[byte & 15];
    } else {
      out += character;
    }
  }
  out += '"';
}

void appendHexadecimal(std::string& out, std::string_view bytes) {
  constexpr std::string_view kHex = "0123456789abcdef";
  out += '<';
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    out += kHex[byte >> 4];
    out += kHex[byte & 15];
  }
  out += '>';
}

template <class Number>
void appendNumber(std::string& out, Number number) {
  std::array<char, 32> digits;
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  out.append(digits.data(), result.ptr);
}

void append(std::string& out, const Value& value, int depth);

void appendArray(std::string& out, const Array& array, int depth) {
  out += '[';
  std::string_view separator;
  for (const Value& element : array) {
    out += std::exchange(separator, ", ");
    append(out, element, depth + 1);
  }
  out += ']';
}

void appendDictionary(std::string& out, const Dictionary& dictionary, int depth) {
  out += '{';
  std::string_view separator;
  for (const auto& [key, value] : dictionary) {
    out += std::exchange(separator, ", ");
    appendQuoted(out, key);
    out += ": ";
    append(out, value, depth + 1);
  }
  out += '}';
}

void append(std::string& out, const Value& value, int depth) {
  if (depth > kMaximumNesting) {
    out += "...";
    return;
  }
  switch (value.kind()) {
    case Value::Kind::Null:
      out += "null";
      break;
    case Value::Kind::Boolean:
      out += value.boolValue() ? "true" : "false";
      break;
    case Value::Kind::Integer:
      value.isBeyondSigned() ? appendNumber(out, value.unsignedValue())
                             : appendNumber(out, value.integerValue());
      break;
    case Value::Kind::Real:
      appendNumber(out, value.realValue());
      break;
    case Value::Kind::Date:
      out += iso8601(*value.date());
      break;
    case Value::Kind::UID:
      out += "UID ";
      appendNumber(out, value.uid()->value);
      break;
    case Value::Kind::String:
      appendQuoted(out, *value.stringView());
      break;
    case Value::Kind::Data:
      appendHexadecimal(out, value.data()->bytes());
      break;
    case Value::Kind::Array:
      appendArray(out, *value.array(), depth);
      break;
    case Value::Kind::Dictionary:
      appendDictionary(out, *value.dictionary(), depth);
      break;
  }
}

}  // namespace

std::string Value::description() const {
  std::string out;
  append(out, *this, 1);
  return out;
}

}  // namespace tallbook
