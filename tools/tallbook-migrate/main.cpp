// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

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

// Exit codes.
constexpr int kMigrated = 0;     ///< or there was nothing to do
constexpr int kNotMigrated = 1;  ///< the migration answered NO, could not save, or was not begun
constexpr int kUsage = 2;
constexpr int kNoModule = 3;
constexpr int kNotNeeded = 4;   ///< the answer to --needed
constexpr int kNotPrinted = 5;  ///< migrated, but the result could not be printed

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

/// Why a migration did not do all that it should have done; empty for one that did.
std::string problemOf(const Migration& migration) {
  const Story& story = migration.story;
  if (!migration.problem.empty()) return migration.problem;
  if (story.hasBegun() && !story.isSaved()) return story.whyNotSaved();
  const auto isKept = [](const LegacyFileEnd& end) {
    return end.kind == LegacyFileEnd::Kind::Kept;
  };
  if (std::ranges::none_of(story.legacyFiles(), isKept)) return "";
  return "not all legacy files were migrated; mend what is wrong, and run it again";
}

int report(const Migration& migration, const CommandLine& line) {
  std::string problem = problemOf(migration);
  if (problem.empty() && !line.shared.host.isPreview) tool::failFromHereOnWith(kNotPrinted);
  const ReportOptions options{line.shared.json, line.shared.host.isPreview, line.quiet};
  if (!printStory(migration.story, options)) {
    problem =
        "accounts are gone for no reason that the migration told; the file before is kept, see "
        "tallbook history";
  }
  if (!problem.empty()) return tool::fail(problem, kNotMigrated);
  if (!migration.story.hasBegun() && !line.quiet) {
    tool::note(
        "finished the removal of legacy files that an earlier migration had begun; run the "
        "migration again for the rest");
  }
  return kMigrated;
}

int run(const CommandLine& line) {
  line.shared.configure();
  const std::string module =
      line.module.empty() ? TALLBOOK_LIBRARY : std::filesystem::absolute(line.module).string();
  const auto migrator = migratorOfModule(module, line.className);
  if (line.asksWhetherNeeded) return migrator->isNeeded() ? kMigrated : kNotNeeded;
  return report(migrateDevice(*migrator, {line.shared.replaceUnreadable, line.withoutCopy}), line);
}

int answer(int argc, char** argv) {
  CLI::App app("Migrates the accounts of a device to this release.", "tallbook-migrate");
  CommandLine line;
  line.declare(app);
  if (const auto end = tool::parse(app, argc, argv, line.shared, kUsage)) return *end;
  line.shared.host.isSilent = line.quiet;
  try {
    return run(line);
  } catch (const ModuleFailure& failure) {
    return tool::fail(failure.what(), kNoModule);
  } catch (const tool::Failure& failure) {
    const bool isUsage = failure.code() == tool::ExitCode::Usage;
    return tool::fail(failure.what(), isUsage ? kUsage : kNotMigrated);
  }
}

}  // namespace
}  // namespace tallbook::migrate

int main(int argc, char** argv) {
  using namespace tallbook::migrate;
  return tallbook::tool::runProgram([&] { return answer(argc, argv); }, kNotMigrated);
}
