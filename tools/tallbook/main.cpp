#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/Host.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "tools/common/Output.h"
#include "tools/common/Program.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {

const char* const kProgram = "tallbook";

namespace {

class CommandLine {
 public:
  explicit CommandLine(std::vector<std::string_view> words) : _words(std::move(words)) {}

  HostOptions host;
  Options options;
  bool verbose = false;
  /// What the chosen command does; set by parsing.
  std::function<ExitCode()> run;

  void declare(CLI::App& app);

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
      sub.add_option("ID", identifier)->required();
      sub.add_option(what, value)->required();
    };
  }
  void declareReading(CLI::App& app);
  void declareChanging(CLI::App& app);
  void command(CLI::App& app, const char* name, const char* summary,
               std::function<ExitCode()> action, const Declare& declareArguments = {});

  std::vector<std::string_view> _words;
  bool _declaresAll = false;
  std::string identifier, key, text, kind, dataclass, type, className, name, parent, folder;
  std::string before, after, generation;
  bool forget = false;
  std::vector<std::string> types;
};

// Declaring all commands takes longer than reading an account, so it is only those that the words
// can mean; all of them for the help, and for words that mean none.
void CommandLine::command(CLI::App& app, const char* commandName, const char* summary,
                          std::function<ExitCode()> action, const Declare& declareArguments) {
  if (!_declaresAll && !isAmongWords(commandName)) return;
  CLI::App* const declared = app.add_subcommand(commandName, summary);
  declared->callback([this, action = std::move(action)] { run = action; });
  if (declareArguments) declareArguments(*declared);
}

void CommandLine::declare(CLI::App& app) {
  app.add_option("--root", host.root, "Root of the device tree; the running system without it")
      ->check(CLI::ExistingDirectory);
  app.add_flag("--json", options.json, "Print JSON");
  app.add_flag("--verbose", verbose, "Print the library's log on standard error");
  app.add_flag("--replace-unreadable", options.replaceUnreadable,
               "Replace an accounts file that is none; it is kept beside the new one");
  app.add_flag("--give-up-upgrade", options.givesUpUpgrade,
               "Save a file of an older version, which will not be upgraded any more then");
  app.add_flag("--trust-modules", host.trustsModules,
               "Load the modules of a device tree that belongs to another user");
  app.require_subcommand(1);
  app.fallthrough();
  _declaresAll = isAmongWords("-h") || isAmongWords("--help");
  declareCommands(app);
  if (_declaresAll || !app.get_subcommands([](CLI::App*) { return true; }).empty()) return;
  _declaresAll = true;
  declareCommands(app);
}

void CommandLine::declareReading(CLI::App& app) {
  command(
      app, "list", "The accounts", [this] { return list(options, types); },
      [this](CLI::App& sub) {
        sub.add_option("--type", types, "Only those of the account type")->expected(1)->take_all();
      });

  command(
      app, "show", "Everything about one account", [this] { return show(options, identifier); },
      [this](CLI::App& sub) { sub.add_option("ID", identifier)->required(); });

  command(
      app, "get", "One value of an account", [this] { return get(options, identifier, key); },
      identifierAnd("KEY", key));

  command(
      app, "types", "The account type catalogue", [this] { return tool::types(options, type); },
      [this](CLI::App& sub) { sub.add_option("TYPE", type); });

  command(app, "dump", "The accounts file as XML, or as JSON", [this] { return dump(options); });

  command(
      app, "diff", "What differs between two accounts files, or generations of them",
      [this] { return diff(options, before, after); },
      [this](CLI::App& sub) {
        sub.add_option("A", before)->required();
        sub.add_option("B", after, "The present accounts file without it");
      });

  command(
      app, "history", "The last generations of the accounts file",
      [this] { return history(options, forget); },
      [this](CLI::App& sub) {
        sub.add_flag("--forget", forget,
                     "Remove them all, with what they hold of removed accounts");
      });

  command(app, "check", "What the next load would drop, repair or ignore",
          [this] { return check(options); });

  command(
      app, "explain", "Why a dataclass of an account is on or off",
      [this] { return explain(options, identifier, dataclass); },
      identifierAnd("DATACLASS", dataclass));

  command(app, "wait", "Wait until no migration runs", [] { return wait(); });
}

void CommandLine::declareChanging(CLI::App& app) {
  command(
      app, "set", "Store a value in an account",
      [this] { return set(options, identifier, key, text, kind); },
      [this](CLI::App& sub) {
        sub.add_option("ID", identifier)->required();
        sub.add_option("KEY", key)->required();
        sub.add_option("VALUE", text)->required();
        sub.add_option("--type", kind, "Kind of the value; else that of the present one, or string")
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
        sub.add_option("TYPE", type)->required();
        sub.add_option("CLASS", className)->required();
        sub.add_option("--name", name, "Name shown to the user");
        sub.add_option("--parent", parent, "Identifier of the account to add it to as a child");
      });

  command(
      app, "remove", "Remove an account, with its children",
      [this] { return remove(options, identifier); },
      [this](CLI::App& sub) { sub.add_option("ID", identifier)->required(); });

  command(
      app, "restore", "Put the accounts of a generation back",
      [this] { return restore(options, generation); },
      [this](CLI::App& sub) { sub.add_option("GENERATION", generation)->required(); });

  command(app, "undo", "Restore the newest generation", [this] { return undo(options); });

  command(
      app, "init", "Make an empty device tree to develop against", [this] { return init(folder); },
      [this](CLI::App& sub) { sub.add_option("DIR", folder)->required(); });
}

ExitCode answer(int argc, char** argv) {
  CLI::App app("Looks at the accounts of a device and changes them.", "tallbook");
  CommandLine line({argv + 1, argv + argc});
  line.declare(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? ExitCode::Done : ExitCode::Usage;
  }
  line.host.log = line.verbose ? HostOptions::Log::StandardError : HostOptions::Log::Nowhere;
  try {
    configureHost(line.host);
    return line.run();
  } catch (const Failure& failure) {
    note(failure.what());
    return failure.code();
  } catch (const InternalConsistencyFailure& failure) {
    note(std::string("the installation is broken: ") + failure.what() + "; reinstall it");
    return ExitCode::NotSaved;
  }
}

}  // namespace
}  // namespace tallbook::tool

int main(int argc, char** argv) {
  using namespace tallbook::tool;
  return runProgram([&] { return static_cast<int>(answer(argc, argv)); },
                    static_cast<int>(ExitCode::NotSaved));
}
