// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// The kinds that `valueFromText` takes.
std::vector<std::string> writableKinds();
/// The value that `text` spells. Throws Failure, with the accepted spellings, where it spells none.
Value valueFromText(const std::string& text, std::string_view kind);
/// "boolean", "integer" or "real" for a text that spells one; else "string".
std::string_view kindThatTextLooksLike(const std::string& text);
/// Throws Failure for a text that is not UTF-8, which no accounts file can hold.
void requireUnicode(const std::string& text);

/// The value as a person reads it: a string bare, containers as indented JSON.
std::string plainText(const Value& value);
/// The value on one line, in its JSON form.
std::string lineText(const Value& value);

}  // namespace tallbook::tool
