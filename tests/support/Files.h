// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

/// Plain file access for arranging and checking, independent of the code under test. A failure
/// throws, so that a test that cannot be arranged does not pass.
namespace tallbook::test {

/// Writes the file anew, with the folders above it.
void writeFile(const std::string& path, std::string_view bytes);
std::string readFile(const std::string& path);
bool exists(const std::string& path);
/// Names in a folder, sorted.
std::vector<std::string> namesIn(const std::string& folder);

/// Writes a binary property list, with the folders above it.
void writePropertyList(const std::string& path, const Value& root);
/// The property list at `path`; null when there is none.
Value readPropertyList(const std::string& path);

}  // namespace tallbook::test
