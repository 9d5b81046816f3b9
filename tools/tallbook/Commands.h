// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/common/CommandLine.h"
#include "tools/common/Outcome.h"

namespace tallbook::tool {

/// What the command line says. A command reads what is declared for it; texts that were not given
/// are empty.
struct Options : SharedOptions {
  bool givesUpUpgrade = false;  ///< a file of an older version may be saved, which ends its upgrade
  bool waitsForMigration = true;  ///< before a change, which a running migration may overwrite

  std::string account;     ///< whatever `recordNamed` takes
  std::string key;         ///< of the account
  std::string dataclass;   ///< in full or short
  std::string generation;  ///< of the accounts file
  std::string folder;      ///< for a device tree
  /// Of accounts: the only ones that are listed or watched, where there are some.
  std::vector<std::string> types;

  std::string value;                     ///< to be set; "-" for that of standard input
  std::string kind;                      ///< of the value, as `valueFromText` takes it
  bool mayBeNew = false;                 ///< though another key differs in capitals alone
  std::optional<std::string> otherwise;  ///< printed for a key that the account lacks

  std::string type;  ///< of a new account, or the only one that is described
  std::optional<std::string> className;
  std::string name;
  std::string parent;       ///< as `account`
  bool isAgreedTo = false;  ///< children may be removed without asking

  std::string file;    ///< of accounts; "-" for standard input
  bool prune = false;  ///< no other accounts stay
  std::string before;  ///< a file, as `apply` takes it, or a generation
  std::string after;   ///< the same; the device's present file where it is empty

  bool forget = false;            ///< remove generations
  bool modules = false;           ///< load them, each in a process of its own
  std::optional<double> seconds;  ///< to wait at most

  std::string since;  ///< file of the baseline to begin with; else now
  std::string keep;   ///< file to keep the baseline in
  bool once = false;  ///< end after the first change
  bool bus = false;   ///< tell the message bus instead of printing
};

// Each command prints its result on standard output, and throws Failure where there is none.

ExitCode add(const Options& options);
ExitCode apply(const Options& options);
ExitCode check(const Options& options);
ExitCode diff(const Options& options);
ExitCode disable(const Options& options);
ExitCode dump(const Options& options);
ExitCode edit(const Options& options);
ExitCode enable(const Options& options);
ExitCode explain(const Options& options);
ExitCode get(const Options& options);
ExitCode history(const Options& options);
ExitCode init(const Options& options);
ExitCode list(const Options& options);
ExitCode remove(const Options& options);
ExitCode restore(const Options& options);
ExitCode set(const Options& options);
ExitCode show(const Options& options);
ExitCode types(const Options& options);
ExitCode undo(const Options& options);
ExitCode unset(const Options& options);
ExitCode wait(const Options& options);
ExitCode watch(const Options& options);

}  // namespace tallbook::tool
