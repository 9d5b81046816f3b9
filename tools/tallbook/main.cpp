// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/InternalConsistencyFailure.h"

// Nothing else of the tool declares options.
#include <CLI/CLI.hpp>

#include "tools/common/CommandLine.h"
#include "tools/common/Nearest.h"
#include "tools/common/Output.h"
#include "tools/common/Program.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/CompleteCommand.h"
#include "tools/tallbook/CreatorsCheck.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {

const char* const kProgram = "tallbook";

namespace {

struct Command {
  const char* name;
  const char* summary;
  ExitCode (*run)(const Options& options);
  void (*declare)(CLI::App& command, Options& options);
};

void declareNothing(CLI::App& /*command*/, Options& /*options*/) {}

void declareAccount(CLI::App& command, Options& options) {
  constexpr const char* kAccount =
      "The account: its identifier, a unique beginning of that, or its name";
  command.add_option("ID", options.account, kAccount)->required();
}

void declareKey(CLI::App& command, Options& options) {
  constexpr const char* kKey = "A key of the account, as \"tallbook show\" prints them";
  declareAccount(command, options);
  command.add_option("KEY", options.key, kKey)->required();
}

void declareDataclass(CLI::App& command, Options& options) {
  declareAccount(command, options);
  command.add_option("DATACLASS", options.dataclass, "In full, or its last word in any capitals")
      ->required();
}

void declareTypes(CLI::App& command, Options& options) {
  command.add_option("--type", options.types, "Only accounts of the account type")
      ->type_name("TYPE")
      ->expected(1)
      ->take_all();
}

constexpr Command kCommands[] = {
    {"list", "The accounts", list, declareTypes},
    {"show", "Everything about one account", show, declareAccount},
    {"get", "One value of an account", get,
     [](CLI::App& command, Options& options) {
       declareKey(command, options);
       command.add_option("--default", options.otherwise,
                          "Printed where the account lacks the key");
     }},
    {"types", "The account type catalogue", types,
     [](CLI::App& command, Options& options) {
       command.add_option("TYPE", options.type, "An account type; else all of them");
     }},
    {"dump", "The accounts file as XML, or as JSON", dump, declareNothing},
    {"diff", "What differs between two accounts files, or generations of them", diff,
     [](CLI::App& command, Options& options) {
       command.add_option("A", options.before, "An accounts file, or a generation of the device's")
           ->required();
       command.add_option("B", options.after, "Another one; else the device's present file");
     }},
    {"history", "The last generations of the accounts file", history,
     [](CLI::App& command, Options& options) {
       command.add_flag("--forget", options.forget,
                        "Remove them all, with what they hold of removed accounts");
     }},
    {"check", "What the next load would drop, repair or ignore, and what modules lack", check,
     [](CLI::App& command, Options& options) {
       command.add_flag("--modules", options.modules, "Load each module, in a process of its own");
     }},
    {"explain", "Why the dataclasses of an account are on or off", explain,
     [](CLI::App& command, Options& options) {
       declareAccount(command, options);
       command.add_option("DATACLASS", options.dataclass,
                          "One of them; else all that its type carries");
     }},
    {"wait", "Wait until no migration runs", wait,
     [](CLI::App& command, Options& options) {
       command.add_option("--timeout", options.seconds, "Give up after so many seconds")
           ->check(CLI::NonNegativeNumber);
     }},
    {"watch", "A line for each change of an account, until stopped", watch,
     [](CLI::App& command, Options& options) {
       declareTypes(command, options);
       command.add_option("--since", options.since, "Begin with what happened since FILE was kept")
           ->type_name("FILE");
       command.add_option("--keep", options.keep, "Keep in FILE how far changes were told")
           ->type_name("FILE");
       command.add_flag("--once", options.once, "End after the first change");
       command.add_flag("--bus", options.bus,
                        "Tell the message bus, names only, and print nothing");
     }},
    {"set", "Store a value in an account", set,
     [](CLI::App& command, Options& options) {
       declareKey(command, options);
       command.add_option("VALUE", options.value, "Or -, for that of standard input")->required();
       command.add_flag("--new-key", options.mayBeNew,
                        "Store a key that differs from a known one in capitals alone");
       command
           .add_option("--type", options.kind,
                       "Kind of the value; else that of the present one, or string")
           ->type_name("KIND")
           ->check(CLI::IsMember(writableKinds()));
     }},
    {"unset", "Remove a value from an account", unset, declareKey},
    {"enable", "Turn a dataclass of an account on", enable, declareDataclass},
    {"disable", "Turn a dataclass of an account off", disable, declareDataclass},
    {"add", "Add an account, and print its identifier", add,
     [](CLI::App& command, Options& options) {
       command
           .add_option("TYPE", options.type, "Its account type, as \"tallbook types\" lists them")
           ->required();
       command.add_option("CLASS", options.className, "Its class; else the type's usual one");
       command.add_option("--name", options.name, "Name shown to the user");
       command.add_option("--parent", options.parent, "The account to add it to as a child")
           ->type_name("ID");
     }},
    {"remove", "Remove an account, with its children", remove,
     [](CLI::App& command, Options& options) {
       declareAccount(command, options);
       command.add_flag("--yes", options.isAgreedTo,
                        "Do not ask before an account with children goes");
     }},
    {"edit", "Edit an account, or all, as text", edit,
     [](CLI::App& command, Options& options) {
       command.add_option("ID", options.account, "An account; else all of them");
     }},
    {"apply", "Make accounts as a file has them", apply,
     [](CLI::App& command, Options& options) {
       command.add_option("FILE", options.file, "As dump prints it; - for standard input")
           ->required();
       command.add_flag("--prune", options.prune, "Remove the accounts that the file lacks");
       command.add_flag("--dry-run", options.host.isPreview,
                        "Show the difference and change nothing");
     }},
    {"restore", "Put the accounts of a generation back", restore,
     [](CLI::App& command, Options& options) {
       command.add_option("GENERATION", options.generation, "As \"tallbook history\" lists them")
           ->required();
     }},
    {"undo", "Restore the newest generation", undo, declareNothing},
    {"init", "Make an empty device tree to develop against", init,
     [](CLI::App& command, Options& options) {
       command.add_option("DIR", options.folder, "A new or an empty folder")->required();
     }},
};

Failure noCommand(const std::string& word) {
  std::vector<std::string> names{"help"};
  for (const Command& command : kCommands) names.emplace_back(command.name);
  const std::string advice = adviceOnMisspelt(word, names);
  return Failure(ExitCode::Usage, "there is no command " + word +
                                      (advice.empty() ? "; see tallbook --help" : advice));
}

/// Prints how to use a command, or all of them where its name is empty.
ExitCode help(const CLI::App& app, const std::string& about) {
  const auto isMeant = [&](const CLI::App* each) { return each->get_name() == about; };
  const auto found = app.get_subcommands(isMeant);
  if (found.empty() && !about.empty()) throw noCommand(about);
  // An App that has met a command helps with that one.
  std::cout << app.get_formatter()->make_help(found.empty() ? &app : found.front(),
                                              found.empty() ? "tallbook" : "tallbook " + about,
                                              CLI::AppFormatMode::Normal);
  return ExitCode::Done;
}

// Declaring all commands takes longer than reading an account, so it is only those that the words
// can mean; all of them for the help, for completion, and for words that mean none.
void declareCommands(CLI::App& app, Options& options, const std::vector<std::string_view>& words) {
  const auto isAmongWords = [&](std::string_view word) {
    return std::ranges::find(words, word) != words.end();
  };
  const bool isForHelp = isAmongWords("-h") || isAmongWords("--help") || isAmongWords("help") ||
                         isAmongWords(kCompleteCommand);
  const bool areAllMeant =
      isForHelp || std::ranges::none_of(kCommands, isAmongWords, &Command::name);
  for (const Command& command : kCommands) {
    if (!areAllMeant && !isAmongWords(command.name)) continue;
    command.declare(*app.add_subcommand(command.name, command.summary), options);
  }
  if (!areAllMeant) return;
  app.add_subcommand("help", "How to use a command")
      ->add_option("COMMAND", options.name, "Else all of them, by name");
}

/// Does what the parsed words ask for; throws Failure for words that ask for nothing.
ExitCode run(const CLI::App& app, const Options& options) {
  std::vector<std::string> unexpected = app.remaining(true);
  std::erase(unexpected, "--");
  const auto parsed = app.get_subcommands();
  if (parsed.empty()) {
    if (!unexpected.empty()) throw noCommand(unexpected.front());
    throw Failure(ExitCode::Usage, "what is to be done? See tallbook --help");
  }
  const std::string name = parsed.front()->get_name();
  if (!unexpected.empty()) {
    throw Failure(ExitCode::Usage, "the argument " + unexpected.front() +
                                       " is not expected; see tallbook help " + name);
  }
  if (name == "help") return help(app, options.name);
  // What makes a device needs none.
  if (name != "init") options.configure();
  const ExitCode code = std::ranges::find(kCommands, name, &Command::name)->run(options);
  // What a preview saves is not on the device.
  if (options.host.isPreview) failFromHereOnWith(static_cast<int>(ExitCode::NotSaved));
  return code;
}

int answer(int argc, char** argv) {
  CLI::App app("Looks at the accounts of a device and changes them.", "tallbook");
  Options options;
  options.declare(app);
  app.add_flag("--give-up-upgrade", options.givesUpUpgrade,
               "Save a file of an older version, which will not be upgraded any more then");
  const auto noWait = [&](std::int64_t) { options.waitsForMigration = false; };
  app.add_flag("--no-wait", noWait, "Change the accounts although a migration runs");
  app.require_subcommand(0, 1);
  app.fallthrough();
  // What nobody expects is told of by `run`, which knows what there is.
  app.allow_extras();
  declareCommands(app, options, {argv + 1, argv + argc});
  // Its words are those of another command line, and no options of this one.
  if (argc > 1 && std::string_view(argv[1]) == kCompleteCommand) {
    return complete(app, options, argc, argv);
  }
  if (const auto end = parse(app, argc, argv, options, static_cast<int>(ExitCode::Usage))) {
    return *end;
  }
  try {
    return static_cast<int>(run(app, options));
  } catch (const Failure& failure) {
    return fail(failure.what(), static_cast<int>(failure.code()));
  } catch (const InternalConsistencyFailure& failure) {
    return fail(failure.what() + adviceOnFailure(), static_cast<int>(ExitCode::NotSaved));
  }
}

}  // namespace
}  // namespace tallbook::tool

int main(int argc, char** argv) {
  using namespace tallbook::tool;
  return runProgram([&] { return answer(argc, argv); }, static_cast<int>(ExitCode::NotSaved));
}
