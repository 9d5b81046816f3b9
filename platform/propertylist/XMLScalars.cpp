#include "platform/propertylist/XMLScalars.h"

#include <charconv>
#include <cstdint>
#include <string>

#include "platform/propertylist/CivilTime.h"
#include "platform/propertylist/MalformedPropertyList.h"

namespace tallbook {
namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr std::uint64_t kLowestMagnitude = std::uint64_t{1} << 63;

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

// Whether the whole text was read as a number.
template <class Number, class... Format>
bool readWhole(std::string_view text, Number& number, Format... format) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, format...);
  return result.ec == std::errc() && result.ptr == end;
}

int sixBits(char digit) {
  if (digit >= 'A' && digit <= 'Z') return digit - 'A';
  if (digit >= 'a' && digit <= 'z') return digit - 'a' + 26;
  if (digit >= '0' && digit <= '9') return digit - '0' + 52;
  if (digit == '+') return 62;
  if (digit == '/') return 63;
  throw MalformedPropertyList("data that is not base 64");
}

}  // namespace

Value integerFromXML(std::string_view text) {
  text = trimmed(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  std::uint64_t magnitude = 0;
  if (!readWhole(text, magnitude, base) || (negative && magnitude > kLowestMagnitude)) {
    throw MalformedPropertyList("an integer that is not a 64-bit number");
  }
  if (negative) return static_cast<std::int64_t>(0 - magnitude);
  return magnitude;
}

Value realFromXML(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  double real = 0;
  if (!readWhole(text, real)) throw MalformedPropertyList("a real that is no number");
  return real;
}

Value dateFromXML(std::string_view text) {
  if (const auto date = dateFromISO8601(trimmed(text))) return *date;
  throw MalformedPropertyList("a date that is not ISO 8601");
}

Value dataFromXML(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int digits = 0;
  int padding = 0;
  for (const char digit : text) {
    if (kWhiteSpace.find(digit) != std::string_view::npos) continue;
    if (digit == '=') {
      ++padding;
      continue;
    }
    if (padding) throw MalformedPropertyList("data that goes on after its padding");
    bits = bits << 6 | static_cast<std::uint32_t>(sixBits(digit));
    // Each digit after the first of a group of four completes a byte.
    if (++digits % 4 != 1) bytes += static_cast<char>(bits >> (4 - digits % 4) % 4 * 2);
  }
  if (digits % 4 == 1) throw MalformedPropertyList("data that ends inside a byte");
  return Data(bytes);
}

}  // namespace tallbook
