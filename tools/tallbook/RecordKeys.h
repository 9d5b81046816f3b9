#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook::tool {

/// The keys of a record that have a meaning, each with the kind that it must have to be read; null
/// for one that every kind is read under.
const std::vector<std::pair<String, Value::Kind>>& kindsOfKeys();
/// That of one key; null too for a key without a meaning.
Value::Kind kindOfKey(std::string_view key);

/// Throws Failure for "Type" and "Identifier", which no command changes.
void requireChangeable(const std::string& key);
/// Throws Failure for a key that would be new in the record and differs in capitals alone from one
/// of the record's or one that has a meaning: it would hardly be what was meant.
void requireNoOtherCapitals(const std::string& key, const Dictionary& record);

}  // namespace tallbook::tool
