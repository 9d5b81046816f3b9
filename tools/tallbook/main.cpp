#include <algorithm>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/InternalConsistencyFailure.h"

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

class CommandLine {
 public:
  explicit CommandLine(std::vector<std::string_view> words) : _words(std::move(words)) {}

  SharedOptions shared;
  Options options;

  void declare(CLI::App& app);
  /// Does what the parsed words ask for; throws Failure for words that ask for nothing.
  ExitCode runCommand(const CLI::App& app) const;

 private:
  using Declare = std::function<void(CLI::App& command)>;

  bool isAmongWords(std::string_view word) const {
    return std::ranges::find(_words, word) != _words.end();
  }
  void declareCommands(CLI::App& app) {
    declareReading(app);
    declareChanging(app);
  }
  /// The arguments of a command about one value of one account.
  Declare identifierAnd(const char* what, std::string& value) {
    return [this, what, &value](CLI::App& sub) {
      declareAccount(sub, identifier);
      sub.add_option(what, value, std::string_view(what) == "KEY" ? kKey : kDataclass)->required();
    };
  }
  static void declareAccount(CLI::App& sub, std::string& account) {
    sub.add_option("ID", account, kAccount)->required();
  }
  void declareReading(CLI::App& app);
  void declareChanging(CLI::App& app);
  void command(CLI::App& app, const char* name, const char* summary,
               std::function<ExitCode()> action, const Declare& declareArguments = {},
               bool isOnDevice = true);

  static constexpr const char* kAccount =
      "The account: its identifier, a unique beginning of that, or its name";
  static constexpr const char* kKey = "A key of the account, as \"tallbook show\" prints them";
  static constexpr const char* kDataclass = "In full, or its last word in any capitals";

  static std::vector<std::string> namesOfCommands(const CLI::App& app);
  static Failure noCommand(const CLI::App& app, const std::string& word);
  ExitCode help(const CLI::App& app) const;

  /// What the chosen command does; set by parsing.
  std::function<ExitCode()> run;
  std::vector<std::string_view> _words;
  bool _declaresAll = false;
  bool _isOnDevice = true;
  Assignment assignment;
  std::string identifier, key, dataclass, type, name, parent, folder, helpFor;
  std::optional<std::string> className, otherwise;
  std::optional<double> seconds;
  std::string before, after, generation, accounts;
  bool forget = false, modules = false, isAgreedTo = false, prune = false;
  std::vector<std::string> types;
  WatchOptions watching;
};

// Declaring all commands takes longer than reading an account, so it is only those that the words
// can mean; all of them for the help, and for words that mean none.
void CommandLine::command(CLI::App& app, const char* commandName, const char* summary,
                          std::function<ExitCode()> action, const Declare& declareArguments,
                          bool isOnDevice) {
  if (!_declaresAll && !isAmongWords(commandName)) return;
  CLI::App* const declared = app.add_subcommand(commandName, summary);
  declared->callback([this, isOnDevice, action = std::move(action)] {
    run = action;
    _isOnDevice = isOnDevice;
  });
  if (declareArguments) declareArguments(*declared);
}

void CommandLine::declare(CLI::App& app) {
  shared.declare(app);
  app.add_flag("--give-up-upgrade", options.givesUpUpgrade,
               "Save a file of an older version, which will not be upgraded any more then");
  const auto noWait = [this](std::int64_t) { options.waitsForMigration = false; };
  app.add_flag("--no-wait", noWait, "Change the accounts although a migration runs");
  app.require_subcommand(0, 1);
  app.fallthrough();
  // What nobody expects is told of by `command`, which knows what there is.
  app.allow_extras();
  _declaresAll = isAmongWords("-h") || isAmongWords("--help") || isAmongWords("help") ||
                 isAmongWords(kCompleteCommand);
  declareCommands(app);
  if (_declaresAll || !app.get_subcommands([](CLI::App*) { return true; }).empty()) return;
  _declaresAll = true;
  declareCommands(app);
}

void CommandLine::declareReading(CLI::App& app) {
  command(
      app, "list", "The accounts", [this] { return list(options, types); },
      [this](CLI::App& sub) {
        sub.add_option("--type", types, "Only those of the account type")
            ->type_name("TYPE")
            ->expected(1)
            ->take_all();
      });

  command(
      app, "show", "Everything about one account", [this] { return show(options, identifier); },
      [this](CLI::App& sub) { declareAccount(sub, identifier); });

  command(
      app, "get", "One value of an account",
      [this] { return get(options, identifier, key, otherwise); },
      [this](CLI::App& sub) {
        declareAccount(sub, identifier);
        sub.add_option("KEY", key, kKey)->required();
        sub.add_option("--default", otherwise, "Printed where the account lacks the key");
      });

  command(
      app, "types", "The account type catalogue", [this] { return tool::types(options, type); },
      [this](CLI::App& sub) { sub.add_option("TYPE", type, "An account type; else all of them"); });

  command(app, "dump", "The accounts file as XML, or as JSON", [this] { return dump(options); });

  command(
      app, "diff", "What differs between two accounts files, or generations of them",
      [this] { return diff(options, before, after); },
      [this](CLI::App& sub) {
        sub.add_option("A", before, "An accounts file, or a generation of the device's")
            ->required();
        sub.add_option("B", after, "Another one; else the device's present file");
      });

  command(
      app, "history", "The last generations of the accounts file",
      [this] { return history(options, forget); },
      [this](CLI::App& sub) {
        sub.add_flag("--forget", forget,
                     "Remove them all, with what they hold of removed accounts");
      });

  command(
      app, "check", "What the next load would drop, repair or ignore, and what modules lack",
      [this] { return check(options, modules); },
      [this](CLI::App& sub) {
        sub.add_flag("--modules", modules, "Load each module, in a process of its own");
      });

  command(
      app, "explain", "Why the dataclasses of an account are on or off",
      [this] { return explain(options, identifier, dataclass); },
      [this](CLI::App& sub) {
        declareAccount(sub, identifier);
        sub.add_option("DATACLASS", dataclass, "One of them; else all that its type carries");
      });

  command(
      app, "wait", "Wait until no migration runs", [this] { return wait(seconds); },
      [this](CLI::App& sub) {
        sub.add_option("--timeout", seconds, "Give up after so many seconds")
            ->check(CLI::NonNegativeNumber);
      });

  command(
      app, "watch", "A line for each change of an account, until stopped",
      [this] { return watch(options, watching); },
      [this](CLI::App& sub) {
        sub.add_option("--type", watching.types, "Only accounts of the account type")
            ->type_name("TYPE")
            ->expected(1)
            ->take_all();
        sub.add_option("--since", watching.since, "Begin with what happened since FILE was kept")
            ->type_name("FILE");
        sub.add_option("--keep", watching.keep, "Keep in FILE how far changes were told")
            ->type_name("FILE");
        sub.add_flag("--once", watching.once, "End after the first change");
        sub.add_flag("--bus", watching.bus, "Tell the message bus, names only, and print nothing");
      });

  command(
      app, "help", "How to use a command", [this, &app] { return help(app); },
      [this](CLI::App& sub) { sub.add_option("COMMAND", helpFor, "Else all of them, by name"); },
      false);
}

void CommandLine::declareChanging(CLI::App& app) {
  command(
      app, "set", "Store a value in an account", [this] { return set(options, assignment); },
      [this](CLI::App& sub) {
        declareAccount(sub, assignment.identifier);
        sub.add_option("KEY", assignment.key, kKey)->required();
        sub.add_option("VALUE", assignment.text, "Or -, for that of standard input")->required();
        sub.add_flag("--new-key", assignment.mayBeNew,
                     "Store a key that differs from a known one in capitals alone");
        sub.add_option("--type", assignment.kind,
                       "Kind of the value; else that of the present one, or string")
            ->type_name("KIND")
            ->check(CLI::IsMember(writableKinds()));
      });

  command(
      app, "unset", "Remove a value from an account",
      [this] { return unset(options, identifier, key); }, identifierAnd("KEY", key));

  for (const bool enabled : {true, false}) {
    command(
        app, enabled ? "enable" : "disable",
        enabled ? "Turn a dataclass of an account on" : "Turn a dataclass of an account off",
        [this, enabled] { return setEnabled(options, identifier, dataclass, enabled); },
        identifierAnd("DATACLASS", dataclass));
  }

  command(
      app, "add", "Add an account, and print its identifier",
      [this] { return add(options, type, className, name, parent); },
      [this](CLI::App& sub) {
        sub.add_option("TYPE", type, "Its account type, as \"tallbook types\" lists them")
            ->required();
        sub.add_option("CLASS", className, "Its class; else the type's usual one");
        sub.add_option("--name", name, "Name shown to the user");
        sub.add_option("--parent", parent, "The account to add it to as a child")->type_name("ID");
      });

  command(
      app, "remove", "Remove an account, with its children",
      [this] { return remove(options, identifier, isAgreedTo); },
      [this](CLI::App& sub) {
        declareAccount(sub, identifier);
        sub.add_flag("--yes", isAgreedTo, "Do not ask before an account with children goes");
      });

  command(
      app, "edit", "Edit an account, or all, as text", [this] { return edit(options, identifier); },
      [this](CLI::App& sub) { sub.add_option("ID", identifier, "An account; else all of them"); });

  command(
      app, "apply", "Make accounts as a file has them",
      [this] { return apply(options, accounts, prune); },
      [this](CLI::App& sub) {
        sub.add_option("FILE", accounts, "As dump prints it; - for standard input")->required();
        sub.add_flag("--prune", prune, "Remove the accounts that the file lacks");
        sub.add_flag("--dry-run", shared.host.isPreview, "Show the difference and change nothing");
      });

  command(
      app, "restore", "Put the accounts of a generation back",
      [this] { return restore(options, generation); },
      [this](CLI::App& sub) {
        sub.add_option("GENERATION", generation, "As \"tallbook history\" lists them")->required();
      });

  command(app, "undo", "Restore the newest generation", [this] { return undo(options); });

  command(
      app, "init", "Make an empty device tree to develop against", [this] { return init(folder); },
      [this](CLI::App& sub) {
        sub.add_option("DIR", folder, "A new or an empty folder")->required();
      },
      false);
}

std::vector<std::string> CommandLine::namesOfCommands(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* each : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(each->get_name());
  }
  return names;
}

Failure CommandLine::noCommand(const CLI::App& app, const std::string& word) {
  const std::string advice = adviceOnMisspelt(word, namesOfCommands(app));
  return Failure(ExitCode::Usage, "there is no command " + word +
                                      (advice.empty() ? "; see tallbook --help" : advice));
}

ExitCode CommandLine::help(const CLI::App& app) const {
  const auto isMeant = [this](const CLI::App* each) { return each->get_name() == helpFor; };
  const auto found = app.get_subcommands(isMeant);
  if (found.empty() && !helpFor.empty()) throw noCommand(app, helpFor);
  const CLI::App* const about = found.empty() ? &app : found.front();
  // An App that has met a command helps with that one.
  std::cout << app.get_formatter()->make_help(
      about, found.empty() ? "tallbook" : "tallbook " + helpFor, CLI::AppFormatMode::Normal);
  return ExitCode::Done;
}

ExitCode CommandLine::runCommand(const CLI::App& app) const {
  std::vector<std::string> unexpected = app.remaining(true);
  std::erase(unexpected, "--");
  if (!unexpected.empty() && !run) throw noCommand(app, unexpected.front());
  if (!unexpected.empty()) {
    throw Failure(ExitCode::Usage, "the argument " + unexpected.front() +
                                       " is not expected; see tallbook help " +
                                       app.get_subcommands().front()->get_name());
  }
  if (!run) throw Failure(ExitCode::Usage, "what is to be done? See tallbook --help");
  if (_isOnDevice) shared.configure();
  const ExitCode code = run();
  // What a preview saves is not on the device.
  if (shared.host.isPreview) failFromHereOnWith(static_cast<int>(ExitCode::NotSaved));
  return code;
}

int answer(int argc, char** argv) {
  CLI::App app("Looks at the accounts of a device and changes them.", "tallbook");
  CommandLine line({argv + 1, argv + argc});
  line.declare(app);
  // Its words are those of another command line, and no options of this one.
  if (argc > 1 && std::string_view(argv[1]) == kCompleteCommand) {
    return complete(app, line.shared, argc, argv);
  }
  if (const auto end = parse(app, argc, argv, line.shared, static_cast<int>(ExitCode::Usage))) {
    return *end;
  }
  line.options.json = line.shared.json;
  line.options.replaceUnreadable = line.shared.replaceUnreadable;
  try {
    return static_cast<int>(line.runCommand(app));
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
