// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>

#include "tallbook/Host.h"

namespace CLI {
class App;
}

namespace tallbook::tool {

/// The options that both programs have.
struct SharedOptions {
  HostOptions host;
  bool json = false;               ///< print for a program
  bool replaceUnreadable = false;  ///< a file that is no accounts file may be replaced

  void declare(CLI::App& app);
  /// Sets the process up. Throws Failure for a root that is no folder.
  void configure() const;
};

/// Parses the command line, whose first word is the program, and settles how errors are told. The
/// exit code for a program that is to end: 0 once help or the version is printed, `usage` for words
/// that cannot be understood, which it says.
std::optional<int> parse(CLI::App& app, int argc, char** argv, SharedOptions& options, int usage);

}  // namespace tallbook::tool
