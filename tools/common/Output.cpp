#include "tools/common/Output.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace tallbook::tool {
namespace {

// A process tells its errors in one way.
bool areErrorsJSON = false;

bool isTerminal(const char* descriptor) {
  std::error_code unknown;
  const std::string device = std::filesystem::read_symlink(descriptor, unknown).string();
  return device.starts_with("/dev/pts/") || device.starts_with("/dev/tty") ||
         device == "/dev/console";
}

std::string_view colourOf(Style style) {
  switch (style) {
    case Style::Added:
      return "\033[32m";
    case Style::Removed:
      return "\033[31m";
    case Style::Changed:
      return "\033[33m";
    case Style::Plain:
      break;
  }
  return "";
}

}  // namespace

bool isColourTerminal() {
  static const bool answer = std::getenv("NO_COLOR") == nullptr && isTerminal("/proc/self/fd/1");
  return answer;
}

std::string styled(Style style, const std::string& text) {
  if (style == Style::Plain || !isColourTerminal()) return text;
  return std::string(colourOf(style)) + text + "\033[0m";
}

std::string printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string result;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x20 && code != 0x7F) {
      result += c;
    } else {
      result += "\\x";
      result += kDigits[code >> 4];
      result += kDigits[code & 15];
    }
  }
  return result;
}

std::string shortened(std::string_view text) {
  constexpr std::size_t kMost = 200;
  if (text.size() <= kMost) return std::string(text);
  std::size_t end = kMost;
  while (end > 0 && (text[end] & 0xC0) == 0x80) --end;  // not inside a character
  return std::string(text.substr(0, end)) + "...";
}

void printJSON(const JSON& json) {
  std::cout << json.dump(2) << '\n';
}

void note(std::string_view text) {
  std::cerr << kProgram << ": " << printable(text) << '\n';
}

void tellErrorsInJSON() {
  areErrorsJSON = true;
}

int fail(std::string_view text, int code) {
  if (areErrorsJSON) {
    const JSON error{{"error", text}, {"code", code}};
    // A name in a message may be no UTF-8.
    std::cerr << error.dump(-1, ' ', false, JSON::error_handler_t::replace) << '\n';
  } else {
    note(text);
  }
  return code;
}

void noteHolderOfMigrationLock(std::string_view holder) {
  note(std::string("waiting until the migration lock is free; it is held by ").append(holder));
}

}  // namespace tallbook::tool
