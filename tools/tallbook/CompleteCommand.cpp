// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/CompleteCommand.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "tools/common/Nearest.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Candidates.h"
#include "tools/tallbook/PartialCommandLine.h"

namespace tallbook::tool {
namespace {

std::vector<Candidate> commands(const CLI::App& app) {
  std::vector<Candidate> candidates;
  for (const CLI::App* each : app.get_subcommands([](const CLI::App*) { return true; })) {
    candidates.push_back({each->get_name(), each->get_description()});
  }
  return candidates;
}

/// Those of the command, whose help is another than the program's, and those of the program.
std::vector<Candidate> options(const CLI::App& app, const CLI::App* command) {
  std::vector<const CLI::Option*> all;
  if (command) all = command->get_options();
  const auto isOfBoth = [&](const CLI::Option* each) {
    return command && each == app.get_help_ptr();
  };
  std::ranges::remove_copy_if(app.get_options(), std::back_inserter(all), isOfBoth);
  std::vector<Candidate> candidates;
  for (const CLI::Option* each : all) {
    for (const std::string& name : each->get_lnames()) {
      candidates.push_back({"--" + name, each->get_description()});
    }
  }
  return candidates;
}

/// Chooses the device as the finished line would. A shell hands a tilde over as it stands.
void useDevice(CLI::App& app, SharedOptions& shared, const PartialCommandLine& line) {
  std::vector<std::string> words;
  std::string root = line.valueOf("--root");
  const char* const home = std::getenv("HOME");
  if (home && (root == "~" || root.starts_with("~/"))) root.replace(0, 1, home);
  if (!root.empty()) words = {root, "--root"};  // from the last to the first
  app.parse(std::move(words));
  shared.configure();
}

std::vector<Candidate> candidatesFor(CLI::App& app, SharedOptions& shared,
                                     const PartialCommandLine& line) {
  if (line.isOption) return options(app, line.command);
  if (line.isCommand) return commands(app);
  if (!line.argument) return {};
  if (nameOfValue(*line.argument) == "COMMAND") return commands(app);
  useDevice(app, shared, line);
  return candidatesForArgument(line);
}

/// Whether a shell can be told it, and the program be told it by the shell.
bool canStandFor(const Candidate& candidate, const PartialCommandLine& line) {
  const bool wouldBeOption = !line.isOption && candidate.value.starts_with('-');
  return !wouldBeOption && printable(candidate.value) == candidate.value;
}

void print(std::vector<Candidate> candidates, const PartialCommandLine& line) {
  std::erase_if(candidates, [&](const Candidate& each) { return !canStandFor(each, line); });
  const auto beginsAlike = [&](const Candidate& each) { return each.value.starts_with(line.word); };
  // Other capitals are better than nothing.
  const bool isAnyAlike = std::ranges::any_of(candidates, beginsAlike);
  for (const Candidate& each : candidates) {
    const bool fits = isAnyAlike ? beginsAlike(each) : beginsWith(each.value, line.word);
    if (!fits && !each.value.empty()) continue;
    if (!each.value.empty()) std::cout << line.before << each.value;
    std::cout << '\t' << printable(each.description) << '\n';
  }
}

}  // namespace

int complete(CLI::App& app, SharedOptions& shared, int argc, char** argv) {
  try {
    const std::string_view text = argc > 2 ? argv[2] : "";
    std::size_t index = 0;
    std::from_chars(text.data(), text.data() + text.size(), index);
    if (index == 0) return 0;
    std::vector<std::string> words(argv + std::min(argc, 3), argv + argc);
    words.resize(std::min(index, words.size()) + 1);
    const PartialCommandLine line = readPartially(app, words);
    print(candidatesFor(app, shared, line), line);
  } catch (const std::exception&) {
    // Whoever types a command hears of it from the command.
  }
  return 0;
}

}  // namespace tallbook::tool
