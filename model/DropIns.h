// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook {

/// A file that a component ships to add to a resource of this library.
struct DropIn {
  std::string path;
  DictionaryRef content;  ///< null where it has none
  std::string fault;      ///< why, on one line
};

/// The files "*.plist" that add to the resource, in the order of their names. A folder that cannot
/// be read stands for what is in it; one that is not there holds nothing.
std::vector<DropIn> dropInsOf(std::string_view resource);

/// Logs that a drop-in is left out.
void logLeftOut(const std::string& path, const std::string& fault);

}  // namespace tallbook
