#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// The kinds that `valueFromText` takes.
std::vector<std::string> writableKinds();
/// The value that `text` spells: a string as it stands, numbers in decimal, true or false, dates in
/// ISO 8601 or as seconds since 2001, data in base64, a UID's number, anything as "json". Throws
/// Failure where the text does not spell one.
Value valueFromText(const std::string& text, std::string_view kind);
/// Throws Failure for a text that is not UTF-8, which no accounts file can hold.
void requireUnicode(const std::string& text);

/// The value as a person reads it: a string bare, containers as indented JSON.
std::string plainText(const Value& value);
/// The value on one line, in its JSON form.
std::string lineText(const Value& value);

}  // namespace tallbook::tool
