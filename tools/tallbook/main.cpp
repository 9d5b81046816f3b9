#include <CLI/CLI.hpp>
#include <functional>

#include "tallbook/Host.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "tools/common/Output.h"
#include "tools/common/Program.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {

const char* const kProgram = "tallbook";

namespace {

struct CommandLine {
  HostOptions host;
  Options options;
  bool verbose = false;
  std::string identifier, key, text, kind, dataclass, type, className, name, parent, folder;
  std::string before, after, generation;
  bool forget = false;
  std::vector<std::string> types;
  /// What the chosen command does; set by parsing.
  std::function<ExitCode()> run;

  void declare(CLI::App& app);

 private:
  void declareReading(CLI::App& app);
  void declareChanging(CLI::App& app);
  CLI::App* command(CLI::App& app, const char* words, const char* summary,
                    std::function<ExitCode()> action) {
    return app.add_subcommand(words, summary)->callback([this, action = std::move(action)] {
      run = action;
    });
  }
};

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
  declareReading(app);
  declareChanging(app);
}

void CommandLine::declareReading(CLI::App& app) {
  CLI::App* sub = command(app, "list", "The accounts", [this] { return list(options, types); });
  sub->add_option("--type", types, "Only those of the account type")->expected(1)->take_all();

  sub = command(app, "show", "Everything about one account",
                [this] { return show(options, identifier); });
  sub->add_option("ID", identifier)->required();

  sub = command(app, "get", "One value of an account",
                [this] { return get(options, identifier, key); });
  sub->add_option("ID", identifier)->required();
  sub->add_option("KEY", key)->required();

  sub = command(app, "types", "The account type catalogue",
                [this] { return tool::types(options, type); });
  sub->add_option("TYPE", type);

  command(app, "dump", "The accounts file as XML, or as JSON", [this] { return dump(options); });

  sub = command(app, "diff", "What differs between two accounts files, or generations of them",
                [this] { return diff(options, before, after); });
  sub->add_option("A", before)->required();
  sub->add_option("B", after, "The present accounts file without it");

  sub = command(app, "history", "The last generations of the accounts file",
                [this] { return history(options, forget); });
  sub->add_flag("--forget", forget, "Remove them all, with what they hold of removed accounts");

  command(app, "check", "What the next load would drop, repair or ignore",
          [this] { return check(options); });

  sub = command(app, "explain", "Why a dataclass of an account is on or off",
                [this] { return explain(options, identifier, dataclass); });
  sub->add_option("ID", identifier)->required();
  sub->add_option("DATACLASS", dataclass)->required();

  command(app, "wait", "Wait until no migration runs", [] { return wait(); });
}

void CommandLine::declareChanging(CLI::App& app) {
  CLI::App* sub = command(app, "set", "Store a value in an account",
                          [this] { return set(options, identifier, key, text, kind); });
  sub->add_option("ID", identifier)->required();
  sub->add_option("KEY", key)->required();
  sub->add_option("VALUE", text)->required();
  sub->add_option("--type", kind, "Kind of the value; else that of the present one, or string")
      ->check(CLI::IsMember(writableKinds()));

  sub = command(app, "unset", "Remove a value from an account",
                [this] { return unset(options, identifier, key); });
  sub->add_option("ID", identifier)->required();
  sub->add_option("KEY", key)->required();

  for (const bool enabled : {true, false}) {
    sub = command(
        app, enabled ? "enable" : "disable",
        enabled ? "Turn a dataclass of an account on" : "Turn a dataclass of an account off",
        [this, enabled] { return setEnabled(options, identifier, dataclass, enabled); });
    sub->add_option("ID", identifier)->required();
    sub->add_option("DATACLASS", dataclass)->required();
  }

  sub = command(app, "add", "Add an account, and print its identifier",
                [this] { return add(options, type, className, name, parent); });
  sub->add_option("TYPE", type)->required();
  sub->add_option("CLASS", className)->required();
  sub->add_option("--name", name, "Name shown to the user");
  sub->add_option("--parent", parent, "Identifier of the account to add it to as a child");

  sub = command(app, "remove", "Remove an account, with its children",
                [this] { return remove(options, identifier); });
  sub->add_option("ID", identifier)->required();

  sub = command(app, "restore", "Put the accounts of a generation back",
                [this] { return restore(options, generation); });
  sub->add_option("GENERATION", generation)->required();

  command(app, "undo", "Restore the newest generation", [this] { return undo(options); });

  sub = command(app, "init", "Make an empty device tree to develop against",
                [this] { return init(folder); });
  sub->add_option("DIR", folder)->required();
}

ExitCode answer(int argc, char** argv) {
  CLI::App app("Looks at the accounts of a device and changes them.", "tallbook");
  CommandLine line;
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
