// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <utility>

#include "tallbook/ScalarText.h"
#include "tallbook/Value.h"

namespace tallbook {
namespace {

constexpr std::string_view kHex = "0123456789abcdef";

template <class Number>
void appendNumber(std::string& out, Number number) {
  std::array<char, 32> digits;
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  out.append(digits.data(), result.ptr);
}

/// The text of one value. A tree may share its containers and texts and so unfold without end; the
/// text is bounded by its own length, and so is the work that it takes.
class Description {
 public:
  void append(const Value& value, int depth);
  std::string text() && { return std::move(_out); }

 private:
  static constexpr std::size_t kMostOfOneValue = std::size_t{1} << 16;
  static constexpr std::size_t kMostInAll = std::size_t{1} << 20;

  bool isFull() const noexcept { return _out.size() >= kMostInAll; }
  std::size_t endOfOneValue() const noexcept {
    return std::min(_out.size() + kMostOfOneValue, kMostInAll);
  }

  // One line whatever the text holds: quotes, backslashes and control characters are escaped.
  void appendQuoted(std::string_view text) {
    const std::size_t end = endOfOneValue();
    _out += '"';
    std::size_t at = 0;
    for (; at < text.size() && (_out.size() < end || isInsideCharacter(text, at)); ++at) {
      const auto byte = static_cast<unsigned char>(text[at]);
      if (byte == '"' || byte == '\\') {
        _out += '\\';
        _out += text[at];
      } else if (byte < 0x20 || byte == 0x7f) {
        _out += "\\x";
        appendHexadecimal(byte);
      } else {
        _out += text[at];
      }
    }
    _out += '"';
    if (at < text.size()) appendLeftOut(text.size() - at, " bytes");
  }

  /// Whether a cut at `at` would tear a character of UTF-8, which has 4 bytes at most.
  static bool isInsideCharacter(std::string_view text, std::size_t at) noexcept {
    const auto continues = [](char byte) { return (byte & 0xc0) == 0x80; };
    const std::string_view before = text.substr(0, at).substr(at - std::min<std::size_t>(at, 3));
    return continues(text[at]) && !std::all_of(before.begin(), before.end(), continues);
  }

  void appendBytes(std::string_view bytes) {
    const std::size_t end = endOfOneValue();
    _out += '<';
    std::size_t at = 0;
    for (; at < bytes.size() && _out.size() < end; ++at) {
      appendHexadecimal(static_cast<unsigned char>(bytes[at]));
    }
    _out += '>';
    if (at < bytes.size()) appendLeftOut(bytes.size() - at, " bytes");
  }

  void appendHexadecimal(unsigned char byte) {
    _out += kHex[byte >> 4];
    _out += kHex[byte & 15];
  }

  template <class Container, class AppendItem>
  void appendItems(const Container& container, AppendItem appendItem) {
    std::size_t left = container.size();
    std::string_view separator;
    for (const auto& item : container) {
      _out += std::exchange(separator, ", ");
      if (isFull()) return appendLeftOut(left, "");
      appendItem(item);
      --left;
    }
  }

  void appendArray(const ArrayRef& array, int depth) {
    _out += '[';
    appendItems(array, [&](const Value& element) { append(element, depth + 1); });
    _out += ']';
  }

  void appendDictionary(const DictionaryRef& dictionary, int depth) {
    _out += '{';
    appendItems(dictionary, [&](const Dictionary::Entry& entry) {
      appendQuoted(entry.key);
      _out += ": ";
      append(entry.value, depth + 1);
    });
    _out += '}';
  }

  void appendLeftOut(std::size_t count, std::string_view unit) {
    _out += "... (";
    appendNumber(_out, count);
    _out.append(unit).append(" more)");
  }

  std::string _out;
};

void Description::append(const Value& value, int depth) {
  if (depth > kMaximumNesting) {
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
      appendQuoted(*value.stringView());
      break;
    case Value::Kind::Data:
      appendBytes(value.data()->bytes());
      break;
    case Value::Kind::Array:
      appendArray(value.array(), depth);
      break;
    case Value::Kind::Dictionary:
      appendDictionary(value.dictionary(), depth);
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
