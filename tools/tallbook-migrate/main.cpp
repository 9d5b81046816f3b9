#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

#include "tallbook/Host.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Outcome.h"
#include "tools/common/Output.h"
#include "tools/common/Program.h"
#include "tools/tallbook-migrate/Migration.h"
#include "tools/tallbook-migrate/Module.h"
#include "tools/tallbook-migrate/Report.h"

namespace tallbook::tool {

const char* const kProgram = "tallbook-migrate";

}  // namespace tallbook::tool

namespace tallbook::migrate {
namespace {

using tool::note;

enum class Exit {
  Migrated = 0,     ///< or there was nothing to do
  NotMigrated = 1,  ///< the migration answered NO, could not save, or was not begun
  Usage = 2,
  NoModule = 3
};

struct CommandLine {
  HostOptions host;
  std::string module;
  std::string className = "AccountsDataMigrator";
  bool json = false;
  Consent consent;
  bool verbose = false;

  void declare(CLI::App& app);
};

void CommandLine::declare(CLI::App& app) {
  app.add_option("--root", host.root, "Root of the device tree; the running system without it")
      ->check(CLI::ExistingDirectory);
  app.add_flag("--dry-run", host.isPreview, "Migrate in memory, and leave the device as it is");
  app.add_option("--module", module, "Path of the migration plug-in; the library without it");
  app.add_option("--class", className, "Name of the plug-in's principal class")
      ->capture_default_str();
  app.add_flag("--json", json, "Print JSON");
  app.add_flag("--verbose", verbose, "Print the library's log on standard error");
  app.add_flag("--replace-unreadable", consent.replaceUnreadable,
               "Replace an accounts file that is none; it is kept beside the new one");
  app.add_flag("--without-copy", consent.withoutCopy,
               "Migrate although the accounts file before can be kept nowhere");
  app.add_flag("--trust-modules", host.trustsModules,
               "Load the modules of a device tree that belongs to another user");
}

/// Says what the table cannot: a migration that did not do what it should have done.
Exit judge(const Migration& migration) {
  const Story& story = migration.story;
  if (!migration.failure.empty()) {
    note("the installation is broken: " + migration.failure + "; reinstall it");
    return Exit::NotMigrated;
  }
  if (!migration.isAnswered) {
    note(std::string("the migration answered NO; see the messages above, and --verbose. Without "
                     "any, its lock could not be made: is ") +
         kAccountMigrationLockFilename + " below the root a file?");
    return Exit::NotMigrated;
  }
  if (!story.hasBegun()) {
    note(
        "finished the removal of legacy files that an earlier migration had begun; run the "
        "migration again for the rest");
    return Exit::Migrated;
  }
  if (!story.isSaved()) {
    note(story.whyNotSaved());
    return Exit::NotMigrated;
  }
  const bool isFileKept = std::ranges::any_of(story.legacyFiles(), [](const LegacyFileEnd& end) {
    return end.kind == LegacyFileEnd::Kind::Kept;
  });
  if (isFileKept) note("not all legacy files were migrated; mend what is wrong, and run it again");
  return isFileKept ? Exit::NotMigrated : Exit::Migrated;
}

Exit report(const Migration& migration, const CommandLine& line) {
  const Exit exit = judge(migration);
  if (printStory(migration.story, {line.json, line.host.isPreview})) return exit;
  note(
      "accounts are gone for no reason that the migration told; the file before is kept, see "
      "tallbook history");
  return Exit::NotMigrated;
}

Exit answer(int argc, char** argv) {
  CLI::App app("Migrates the accounts of a device to this release.", "tallbook-migrate");
  CommandLine line;
  line.declare(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? Exit::Migrated : Exit::Usage;
  }
  line.host.log = line.verbose ? HostOptions::Log::StandardError : HostOptions::Log::Nowhere;
  const std::string module =
      line.module.empty() ? TALLBOOK_LIBRARY : std::filesystem::absolute(line.module).string();
  try {
    const auto migrator = migratorOfModule(module, line.className);
    return report(migrateDevice(*migrator, line.host, line.consent), line);
  } catch (const ModuleFailure& failure) {
    note(failure.what());
    return Exit::NoModule;
  } catch (const tool::Failure& failure) {
    note(failure.what());
  }
  return Exit::NotMigrated;
}

}  // namespace
}  // namespace tallbook::migrate

int main(int argc, char** argv) {
  using namespace tallbook::migrate;
  return tallbook::tool::runProgram([&] { return static_cast<int>(answer(argc, argv)); },
                                    static_cast<int>(Exit::NotMigrated));
}
