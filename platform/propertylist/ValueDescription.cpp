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

/// The text of one value. A tree that shares its containers may unfold without end.
class Description {
 public:
  void append(const Value& value, int depth);
  std::string text() && { return std::move(_out); }

 private:
  static constexpr std::size_t kMostValues = 1'000'000;

  void appendArray(const Array& array, int depth) {
    _out += '[';
    std::string_view separator;
    for (const Value& element : array) {
      _out += std::exchange(separator, ", ");
      append(element, depth + 1);
      if (_left == 0) break;
    }
    _out += ']';
  }

  void appendDictionary(const Dictionary& dictionary, int depth) {
    _out += '{';
    std::string_view separator;
    for (const auto& [key, value] : dictionary) {
      _out += std::exchange(separator, ", ");
      appendQuoted(_out, key);
      _out += ": ";
      append(value, depth + 1);
      if (_left == 0) break;
    }
    _out += '}';
  }

  std::string _out;
  std::size_t _left = kMostValues;
};

void Description::append(const Value& value, int depth) {
  if (_left > 0) --_left;
  if (depth > kMaximumNesting || _left == 0) {
    _out += "...";
    return;
  }
  switch (value.kind()) {
    case Value::Kind::Null:
      _out += "null";
      break;
    case Value::Kind::Boolean:
      _out += value.boolValue() ? "true" : "false";
      break;
    case Value::Kind::Integer:
      value.isBeyondSigned() ? appendNumber(_out, value.unsignedValue())
                             : appendNumber(_out, value.integerValue());
      break;
    case Value::Kind::Real:
      appendNumber(_out, value.realValue());
      break;
    case Value::Kind::Date:
      _out += iso8601(*value.date());
      break;
    case Value::Kind::UID:
      _out += "UID ";
      appendNumber(_out, value.uid()->value);
      break;
    case Value::Kind::String:
      appendQuoted(_out, *value.stringView());
      break;
    case Value::Kind::Data:
      appendHexadecimal(_out, value.data()->bytes());
      break;
    case Value::Kind::Array:
      appendArray(*value.array(), depth);
      break;
    case Value::Kind::Dictionary:
      appendDictionary(*value.dictionary(), depth);
      break;
  }
}

}  // namespace

std::string Value::description() const {
  Description description;
  description.append(*this, 1);
  return std::move(description).text();
}

}  // namespace tallbook
