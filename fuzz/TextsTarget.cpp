// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// The texts that the command-line tool takes and prints: JSON, and values of each kind.

#include <algorithm>
#include <optional>

#include "tallbook/PropertyList.h"

#include "fuzz/Check.h"
#include "fuzz/DrawnAccounts.h"
#include "fuzz/Target.h"
#include "tools/common/Output.h"
#include "tools/tallbook/AccountsText.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {

const char* const kProgram = "texts";

}  // namespace tallbook::tool

namespace tallbook::fuzz {
namespace {

using namespace tool;

/// What `work` answers; nullopt where it refuses, with a reason.
template <class Work>
auto unlessRefused(Work work) -> std::optional<decltype(work())> {
  try {
    return work();
  } catch (const Failure& failure) {
    check(failure.what()[0] != '\0', "a refusal has a reason");
    return std::nullopt;
  }
}

void checkForms(const Value& value) {
  check(valueFromJSON(jsonFromValue(value)) == value, "JSON keeps every value");
  const std::string line = lineText(value);
  check(line.find('\n') == line.npos, "a value is on one line");
  check(valueFromJSON(jsonFromText(line)) == value, "JSON on one line is read as it was");
  const bool isContainer = value.array() || value.dictionary();
  if (isContainer) check(valueFromText(plainText(value), "json") == value, "so is indented JSON");
  check(printable(line).find('\033') == std::string::npos, "nothing commands the terminal");
}

void checkText(const std::string& text, const std::string& kind) {
  const auto value = unlessRefused([&] { return valueFromText(text, kind); });
  if (!value) return;
  checkForms(*value);
  const std::string printed = plainText(*value);
  // What is no number is printed in its JSON form, which has been tried.
  const bool isNoNumber = (kind == "real" || kind == "date") && printed.starts_with('{');
  if (kind == "json" || isNoNumber) return;
  check(valueFromText(printed, kind) == *value, "what is printed is read as it was");
}

void checkJSON(const std::string& text) {
  const auto json = unlessRefused([&] { return jsonFromText(text); });
  const auto value = json ? unlessRefused([&] { return valueFromJSON(*json); }) : std::nullopt;
  if (value) checkForms(*value);
}

void checkAccounts(const std::string& text) {
  const tool::AccountsFile file = accountsFromText(text, "the text");
  check(!file.isUnusable() || !file.state.reason.empty(), "a refusal has a reason");
  if (!file.topLevel) return;
  const tool::AccountsFile again = accountsFromText(lineText(file.topLevel), "the text");
  check(equalContent(again.topLevel, file.topLevel), "accounts are read as they are printed");
}

std::string damaged(Drawn& drawn, std::string text) {
  while (!text.empty() && drawn.oneIn(3)) {
    const std::size_t at = drawn.number<std::uint16_t>() % text.size();
    text.replace(at, std::size_t(drawn.below(4)), drawn.bytes(16));
  }
  return text;
}

}  // namespace

void tryInput(std::string_view input) {
  Drawn drawn(input);
  switch (drawn.below(4)) {
    case 0:
      return checkJSON(drawn.oneIn(2) ? drawn.rest() : damaged(drawn, lineText(drawnValue(drawn))));
    case 1: {
      const std::vector<std::string> kinds = writableKinds();
      const std::string& kind = kinds[std::size_t(drawn.below(int(kinds.size())))];
      const std::string text = drawn.rest();
      checkText(text, kind);
      checkText(text, std::string(unlessRefused([&] {
                                    requireUnicode(text);
                                    return kindThatTextLooksLike(text);
                                  }).value_or("string")));
      return;
    }
    case 2:
      return checkForms(drawnValue(drawn));
    default:
      return checkAccounts(damaged(drawn, lineText(drawnAccountsFile(drawn))));
  }
}

}  // namespace tallbook::fuzz
