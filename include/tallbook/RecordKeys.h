// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/Export.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// The keys of a record that have a meaning to the library, each with the kind that it must have to
/// be read; null for one that every kind is read under.
[[nodiscard]] TALLBOOK_EXPORT const std::vector<std::pair<String, Value::Kind>>& kindsOfKeys();
/// That of one key; null too for a key without a meaning.
[[nodiscard]] TALLBOOK_EXPORT Value::Kind kindOfKey(std::string_view key);
/// Why the value of a key stays as it is for as long as there is the account, on one line; empty
/// for all other keys.
[[nodiscard]] TALLBOOK_EXPORT std::string whyKeyIsFixed(std::string_view key);

}  // namespace tallbook
