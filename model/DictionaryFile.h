// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>

#include "tallbook/Value.h"

namespace tallbook {

/// The property-list dictionary in the file at `path`, frozen; null when there is no such file, it
/// cannot be read, or it holds anything else; `fault` then says why, on one line.
DictionaryRef dictionaryFromFile(const std::string& path, std::string* fault = nullptr);

/// The same for the shipped resource `name`.plist.
DictionaryRef dictionaryFromResource(std::string_view name);

}  // namespace tallbook
