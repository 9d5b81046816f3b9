// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tools/tallbook/PartialCommandLine.h"

namespace tallbook::tool {

/// What a word may become.
struct Candidate {
  std::string value;  ///< empty for a file that the shell is to find by itself
  std::string description;
};

/// Whatever the device knows that may stand for the argument of the line's last word, whether it
/// begins as that does or not. Nothing where nothing is known. Throws Failure where the device
/// cannot be asked.
std::vector<Candidate> candidatesForArgument(const PartialCommandLine& line);

}  // namespace tallbook::tool
