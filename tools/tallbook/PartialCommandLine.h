// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallbook::tool {

/// A command line as far as it is written: what stands on it, and what the last word is to become.
struct PartialCommandLine {
  const CLI::App* command = nullptr;  ///< null while none is written
  /// Options with a value, and positional arguments; with their values.
  std::vector<std::pair<const CLI::Option*, std::string>> given;

  /// The option or positional argument that the last word is for; null for one that names a command
  /// or an option itself, or is not expected.
  const CLI::Option* argument = nullptr;
  bool isOption = false;   ///< the last word names an option
  bool isCommand = false;  ///< the last word names a command
  std::string before;      ///< what is not to be changed of the last word: "--type="
  std::string word;        ///< the rest of it

  /// The value that was given for an argument of that name; empty where none was.
  std::string valueOf(std::string_view name) const;
};

/// What the words are by the options and commands that the program has; the first of them, the
/// program itself, is left out, and the last one may be unfinished or empty.
PartialCommandLine readPartially(const CLI::App& app, const std::vector<std::string>& words);

/// What stands for the value of an argument in the help: "ID", "FILE".
std::string nameOfValue(const CLI::Option& argument);

}  // namespace tallbook::tool
