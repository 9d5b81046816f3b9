#include <algorithm>
#include <filesystem>

#include "tallbook/Vocabulary.h"

#include "tools/common/CommandLine.h"
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

enum class Exit {
  Migrated = 0,     ///< or there was nothing to do
  NotMigrated = 1,  ///< the migration answered NO, could not save, or was not begun
  Usage = 2,
  NoModule = 3,
  NotNeeded = 4,  ///< the answer to --needed
  NotPrinted = 5  ///< migrated, but the result could not be printed
};

struct CommandLine {
  tool::SharedOptions shared;
  std::string module;
  std::string className = "AccountsDataMigrator";
  bool withoutCopy = false;
  bool asksWhetherNeeded = false;
  bool quiet = false;

  void declare(CLI::App& app);
};

void CommandLine::declare(CLI::App& app) {
  shared.declare(app);
  app.add_flag("--dry-run", shared.host.isPreview,
               "Migrate in memory, and leave the device as it is");
  app.add_flag("--needed", asksWhetherNeeded,
               "Only answer whether there is something to migrate: 0, or 4 where there is nothing");
  app.add_flag("--quiet", quiet, "Print no table and no messages but errors");
  app.add_option("--module", module, "Path of the migration plug-in; the library without it");
  app.add_option("--class", className, "Name of the plug-in's principal class")
      ->capture_default_str();
  app.add_flag("--without-copy", withoutCopy,
               "Migrate although the accounts file before can be kept nowhere");
}

/// How a migration ended, and what there is to say of it that the table cannot.
struct Verdict {
  Exit exit = Exit::Migrated;
  std::string message = "";
};

Verdict judge(const Migration& migration) {
  const Story& story = migration.story;
  if (!migration.failure.empty()) {
    return {Exit::NotMigrated,
            "the installation is broken: " + migration.failure + "; reinstall it"};
  }
  if (!migration.isAnswered) {
    return {Exit::NotMigrated,
            std::string("the migration answered NO; see the messages above, and --verbose. Without "
                        "any, its lock could not be made: is ") +
                kAccountMigrationLockFilename + " below the root a file?"};
  }
  if (!story.hasBegun()) {
    return {Exit::Migrated,
            "finished the removal of legacy files that an earlier migration had begun; run the "
            "migration again for the rest"};
  }
  if (!story.isSaved()) return {Exit::NotMigrated, story.whyNotSaved()};
  const bool isFileKept = std::ranges::any_of(story.legacyFiles(), [](const LegacyFileEnd& end) {
    return end.kind == LegacyFileEnd::Kind::Kept;
  });
  if (!isFileKept) return {};
  return {Exit::NotMigrated,
          "not all legacy files were migrated; mend what is wrong, and run it again"};
}

int report(const Migration& migration, const CommandLine& line) {
  Verdict verdict = judge(migration);
  if (verdict.exit == Exit::Migrated) {
    tool::failFromHereOnWith(static_cast<int>(Exit::NotPrinted));
  }
  const ReportOptions options{line.shared.json, line.shared.host.isPreview, line.quiet};
  if (!printStory(migration.story, options)) {
    verdict = {Exit::NotMigrated,
               "accounts are gone for no reason that the migration told; the file before is kept, "
               "see tallbook history"};
  }
  const int code = static_cast<int>(verdict.exit);
  if (code != 0) return tool::fail(verdict.message, code);
  if (!verdict.message.empty() && !line.quiet) tool::note(verdict.message);
  return code;
}

int run(const CommandLine& line) {
  line.shared.configure();
  const std::string module =
      line.module.empty() ? TALLBOOK_LIBRARY : std::filesystem::absolute(line.module).string();
  const auto migrator = migratorOfModule(module, line.className);
  if (line.asksWhetherNeeded) {
    return static_cast<int>(migrator->isNeeded() ? Exit::Migrated : Exit::NotNeeded);
  }
  return report(migrateDevice(*migrator, {line.shared.replaceUnreadable, line.withoutCopy}), line);
}

int answer(int argc, char** argv) {
  CLI::App app("Migrates the accounts of a device to this release.", "tallbook-migrate");
  CommandLine line;
  line.declare(app);
  if (const auto end = tool::parse(app, argc, argv, line.shared, static_cast<int>(Exit::Usage))) {
    return *end;
  }
  line.shared.host.isSilent = line.quiet;
  try {
    return run(line);
  } catch (const ModuleFailure& failure) {
    return tool::fail(failure.what(), static_cast<int>(Exit::NoModule));
  } catch (const tool::Failure& failure) {
    const bool isUsage = failure.code() == tool::ExitCode::Usage;
    return tool::fail(failure.what(), static_cast<int>(isUsage ? Exit::Usage : Exit::NotMigrated));
  }
}

}  // namespace
}  // namespace tallbook::migrate

int main(int argc, char** argv) {
  using namespace tallbook::migrate;
  return tallbook::tool::runProgram([&] { return answer(argc, argv); },
                                    static_cast<int>(Exit::NotMigrated));
}
