#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace tallbook::tool {

/// JSON that keeps keys in the order in which the file has them.
using JSON = nlohmann::ordered_json;

enum class Style { Plain, Added, Removed, Changed };

/// The control sequence that begins the style; empty for a plain one.
const char* colourOf(Style style);
/// Whether standard output is a terminal.
bool isTerminal();
/// Whether it is one that may be written to in colour: not where NO_COLOR is set and not empty.
bool isColourTerminal();
/// The text as it is, on a terminal with control characters spelled out but for ends of lines.
std::string shown(const std::string& text);
/// The same in the style's colour where the output may have one.
std::string styled(Style style, const std::string& text);
/// The text with control characters spelled out, so that none of them commands the terminal.
std::string printable(std::string_view text);
/// A text that is there to recognise something by: the end of a very long one is "...". Names and
/// identifiers are repeated in every line about their records.
std::string shortened(std::string_view text);
void printJSON(const JSON& json);
/// The running program's name, which each program defines.
extern const char* const kProgram;
/// A line for the person at the keyboard, kept apart from what a program reads.
void note(std::string_view text);
/// From here on errors are JSON: {"error": ..., "code": ...}.
void tellErrorsInJSON();
/// Says on standard error why the program ends early, and answers its exit code.
int fail(std::string_view text, int code);
/// Says for whom the program is waiting.
void noteHolderOfMigrationLock(std::string_view holder);

}  // namespace tallbook::tool
