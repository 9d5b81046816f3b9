// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/Output.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
// Only the system tells what standard input is.
#include <unistd.h>

namespace tallbook::tool {
namespace {

// A process tells its errors in one way.
bool areErrorsJSON = false;

std::string valueOf(const char* variable) {
  const char* const value = std::getenv(variable);
  return value ? value : "";
}

/// Spells control characters, those of Unicode's second set too, as a prefix and two hexadecimal
/// digits.
std::string spelledOut(std::string_view text, std::string_view prefix, std::string_view kept) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    auto code = static_cast<unsigned char>(text[at]);
    const auto next = static_cast<unsigned char>(at + 1 < text.size() ? text[at + 1] : 0);
    const bool isSecondSet = code == 0xC2 && next >= 0x80 && next < 0xA0;
    if (isSecondSet) {
      code = next;
      ++at;
    }
    if (isSecondSet || ((code < 0x20 || code == 0x7F) && kept.find(text[at]) == kept.npos)) {
      result.append(prefix) += kDigits[code >> 4];
      result += kDigits[code & 15];
    } else {
      result += text[at];
    }
  }
  return result;
}

}  // namespace

bool isTerminal() {
  static const bool answer = [] {
    std::error_code unknown;
    const std::string device = std::filesystem::read_symlink("/proc/self/fd/1", unknown).string();
    return device.starts_with("/dev/pts/") || device.starts_with("/dev/tty") ||
           device == "/dev/console";
  }();
  return answer;
}

std::string shown(const std::string& text) {
  std::string spelled = spelledOut(text, "\\x", "\n\t");
  // Most texts are spelled as they are, and asking what the output is takes longer than they do.
  return spelled == text || !isTerminal() ? text : spelled;
}

std::string styled(Style style, const std::string& text) {
  static const bool isColoured =
      valueOf("NO_COLOR").empty() && valueOf("TERM") != "dumb" && isTerminal();
  if (style == Style::Plain || !isColoured) return shown(text);
  const char* const colour = style == Style::Added     ? "\033[32m"
                             : style == Style::Removed ? "\033[31m"
                                                       : "\033[33m";
  return colour + shown(text) + "\033[0m";
}

std::string printable(std::string_view text) {
  return spelledOut(text, "\\x", "");
}

std::string localTimeText(std::chrono::sys_time<std::chrono::nanoseconds> instant) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(instant);
  const std::time_t time = seconds.time_since_epoch().count();
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&time));
  return text;
}

void printJSON(const JSON& json) {
  const std::string text = json.dump(2);
  std::cout << (isTerminal() ? spelledOut(text, "\\u00", "\n") : text) << '\n';
}

void note(std::string_view text) {
  std::cerr << kProgram << ": " << printable(text) << '\n';
}

bool isSomebodyThere() {
  return ::isatty(STDIN_FILENO) == 1;
}

bool isAgreed(const std::string& question) {
  std::cerr << kProgram << ": " << printable(question) << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  return answer.starts_with('y') || answer.starts_with('Y');
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
