// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/XMLWriter.h"

#include <charconv>
#include <cmath>

#include "tallbook/ScalarText.h"

#include "platform/propertylist/Limits.h"
#include "platform/propertylist/MalformedPropertyList.h"
#include "platform/propertylist/UnicodeText.h"

namespace tallbook {
namespace {

/// Writes into the property list, and knows where in it it is.
class Writer {
 public:
  explicit Writer(XMLPropertyList& out) : _out(out) {}

  void write(const Value& value) {
    if (++_values > kMostValues) throw MalformedPropertyList("there are too many values");
    switch (value.kind()) {
      case Value::Kind::Null:
        refuse("is null");
      case Value::Kind::UID:
        refuse("is a UID");
      case Value::Kind::Boolean:
        line(value.boolValue() ? "<true/>" : "<false/>");
        break;
      case Value::Kind::Integer:
        element("integer", value.isBeyondSigned() ? std::to_string(value.unsignedValue())
                                                  : std::to_string(value.integerValue()));
        break;
      case Value::Kind::Real:
        element("real", realText(value.realValue()));
        break;
      case Value::Kind::Date:
        element("date", dateText(*value.date()));
        break;
      case Value::Kind::String:
        element("string", escaped(*value.stringView()));
        break;
      case Value::Kind::Data:
        element("data", base64(value.data()->bytes()));
        break;
      case Value::Kind::Array:
        writeArray(value.array());
        break;
      case Value::Kind::Dictionary:
        writeDictionary(value.dictionary());
        break;
    }
  }

 private:
  void writeArray(const ArrayRef& array) {
    if (array.empty()) return line("<array/>");
    open("<array>");
    for (std::size_t index = 0; index < array.size(); ++index) {
      const std::size_t here = enter("[" + std::to_string(index) + "]");
      write(array[index]);
      _place.resize(here);
    }
    close("</array>");
  }

  void writeDictionary(const DictionaryRef& dictionary) {
    if (dictionary.empty()) return line("<dict/>");
    open("<dict>");
    for (const auto& [key, value] : dictionary) {
      const std::size_t here = enter((_place.empty() ? "" : ".") + key.str());
      element("key", escaped(key));
      write(value);
      _place.resize(here);
    }
    close("</dict>");
  }

  /// Adds a step to the place; answers where the step began.
  std::size_t enter(const std::string& step) {
    const std::size_t here = _place.size();
    _place += step;
    return here;
  }

  static std::string realText(double real) {
    if (std::isnan(real)) return "nan";
    if (std::isinf(real)) return real < 0 ? "-infinity" : "+infinity";
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, real).ptr);
  }

  std::string dateText(Date date) {
    constexpr double kFirst = -63'113'904'000;  // 0001-01-01
    constexpr double kEnd = 252'423'993'600;    // 10000-01-01
    const double whole = std::floor(date.secondsSince2001);
    if (!(whole >= kFirst && whole < kEnd)) refuse("is a date outside the years 1 to 9999");
    if (date.secondsSince2001 != whole) _out.hasShortenedDates = true;
    return iso8601(Date{whole});
  }

  std::string escaped(std::string_view text) const {
    if (!utf16Length(text)) refuse("is no UTF-8");
    if (text.find("\xEF\xBF\xBE") != text.npos || text.find("\xEF\xBF\xBF") != text.npos) {
      refuse("holds a code that is no character");
    }
    std::string result;
    for (const char c : text) {
      if (c == '&') {
        result += "&amp;";
      } else if (c == '<') {
        result += "&lt;";
      } else if (c == '>') {
        result += "&gt;";
      } else if (c == '\r') {
        result += "&#13;";  // a bare one would be read as a line feed
      } else if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n') {
        refuse("holds a control character");
      } else {
        result += c;
      }
    }
    return result;
  }

  [[noreturn]] void refuse(const std::string& why) const {
    throw MalformedPropertyList((_place.empty() ? "its top level" : _place) + " " + why);
  }

  void line(const std::string& text) {
    _out.text.append(static_cast<std::size_t>(_depth), '\t');
    _out.text += text;
    _out.text += '\n';
  }
  void element(const std::string& name, const std::string& content) {
    line("<" + name + ">" + content + "</" + name + ">");
  }
  void open(const std::string& tag) {
    line(tag);
    if (++_depth > kMaximumNesting) refuse("is nested too deeply");
  }
  void close(const std::string& tag) {
    --_depth;
    line(tag);
  }

  XMLPropertyList& _out;
  std::string _place;
  int _depth = 0;
  std::size_t _values = 0;
};

}  // namespace

XMLPropertyList xmlText(const Value& root) {
  XMLPropertyList out;
  out.text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
  Writer(out).write(root);
  out.text += "</plist>\n";
  return out;
}

}  // namespace tallbook
