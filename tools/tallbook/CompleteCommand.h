// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <CLI/CLI.hpp>

#include "tools/common/CommandLine.h"

namespace tallbook::tool {

/// The command by which a shell asks what a word may become. No help tells of it.
inline constexpr const char* kCompleteCommand = "_complete";

/// Answers `tallbook _complete INDEX WORD...`, for the word of that index on the command line: a
/// candidate a line, its value, a tab, and what it is. A line without a value, "\tfiles" or
/// "\tfolders", lets the shell look for some itself. Where something is wrong there is no answer.
/// The app has all commands, and `shared` what its options are stored in.
int complete(CLI::App& app, SharedOptions& shared, int argc, char** argv);

}  // namespace tallbook::tool
