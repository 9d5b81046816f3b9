// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "tools/common/Outcome.h"
#include "tools/common/Output.h"

namespace tallbook::tool {

void SharedOptions::declare(CLI::App& app) {
  app.set_version_flag("--version", std::string(kProgram) + " " + TALLBOOK_VERSION);
  app.add_option("--root", host.root, "Root of the device tree; the running system without it")
      ->type_name("DIR")
      // A script's unset variable must not mean the running system.
      ->check([](const std::string& root) { return root.empty() ? "it is empty" : ""; })
      ->envname("TALLBOOK_ROOT");
  app.add_flag("--json", json, "Print JSON");
  const auto verbose = [this](std::int64_t) { host.log = HostOptions::Log::StandardError; };
  app.add_flag("--verbose", verbose, "Print the library's log on standard error");
  app.add_flag("--replace-unreadable", replaceUnreadable,
               "Replace an accounts file that is none; it is kept beside the new one");
  app.add_flag("--trust-modules", host.trustsModules,
               "Load the modules of a device tree that belongs to another user");
  host.log = HostOptions::Log::Nowhere;
}

void SharedOptions::configure() const {
  std::error_code unknown;
  if (!host.root.empty() && !std::filesystem::is_directory(host.root, unknown)) {
    throw Failure(ExitCode::Usage, "there is no folder " + host.root +
                                       " to be the root of a device; \"tallbook init\" makes one");
  }
  configureHost(host);
}

std::optional<int> parse(CLI::App& app, int argc, char** argv, SharedOptions& options, int usage) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    const auto isJSON = [](std::string_view word) { return word == "--json"; };
    if (std::any_of(argv + 1, argv + argc, isJSON)) tellErrorsInJSON();
    return fail(std::string(error.what()) + "; see " + kProgram + " --help", usage);
  }
  if (options.json) tellErrorsInJSON();
  return std::nullopt;
}

}  // namespace tallbook::tool
