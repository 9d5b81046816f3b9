// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tallbook/ScalarText.h"

namespace tallbook::tool {

/// JSON that keeps keys in the order in which the file has them.
using JSON = nlohmann::ordered_json;

enum class Style { Plain, Added, Removed, Changed };

/// Whether standard output is a terminal.
bool isTerminal();
/// The text as it is, on a terminal with control characters spelled out but for ends of lines.
std::string shown(const std::string& text);
/// The same in the style's colour on a terminal, but not where NO_COLOR is set and not empty.
std::string styled(Style style, const std::string& text);
/// The text with control characters spelled out, so that none of them commands the terminal.
std::string printable(std::string_view text);
/// "2026-01-31 12:00:00", in the device's time zone.
std::string localTimeText(std::chrono::sys_time<std::chrono::nanoseconds> instant);
void printJSON(const JSON& json);
/// The running program's name, which each program defines.
extern const char* const kProgram;
/// A line for the person at the keyboard, kept apart from what a program reads.
void note(std::string_view text);
/// Whether somebody at a terminal can be asked.
bool isSomebodyThere();
/// Asks a question on standard error; true for an answer that begins with a "y".
bool isAgreed(const std::string& question);
/// From here on errors are JSON: {"error": ..., "code": ...}.
void tellErrorsInJSON();
/// Says on standard error why the program ends early, and answers its exit code.
int fail(std::string_view text, int code);
/// Says for whom the program is waiting.
void noteHolderOfMigrationLock(std::string_view holder);

}  // namespace tallbook::tool
