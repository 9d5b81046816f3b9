#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/common/Outcome.h"

namespace tallbook::tool {

/// What holds for every command.
struct Options {
  bool json = false;               ///< print for a program
  bool replaceUnreadable = false;  ///< a file that is no accounts file may be replaced
  bool givesUpUpgrade = false;  ///< a file of an older version may be saved, which ends its upgrade
  bool waitsForMigration = true;  ///< before a change, which a running migration may overwrite
};

// Each command prints its result on standard output, and throws Failure where there is none. An
// account may be called by whatever `recordNamed` takes.

/// The accounts, children below their parents; only those of the types where some are given.
ExitCode list(const Options& options, const std::vector<std::string>& types);
ExitCode show(const Options& options, const std::string& identifier);
/// The text `otherwise` is printed for a key that the account lacks.
ExitCode get(const Options& options, const std::string& identifier, const std::string& key,
             const std::optional<std::string>& otherwise);
/// What `set` stores, and where.
struct Assignment {
  std::string identifier, key;
  std::string text;       ///< "-" for that of standard input
  std::string kind;       ///< as `valueFromText` takes it; empty for that of the key, else a string
  bool mayBeNew = false;  ///< though another key differs in capitals alone
};
/// Saves nothing where the value is there already.
ExitCode set(const Options& options, const Assignment& assignment);
ExitCode unset(const Options& options, const std::string& identifier, const std::string& key);
ExitCode setEnabled(const Options& options, const std::string& identifier,
                    const std::string& dataclass, bool enabled);
/// Prints the new record's identifier. Without a class it has the type's usual one. `name` and
/// `parent` may be empty.
ExitCode add(const Options& options, const std::string& type,
             const std::optional<std::string>& className, const std::string& name,
             const std::string& parent);
/// Asks before it removes children with it, where somebody is there and it is not agreed to.
ExitCode remove(const Options& options, const std::string& identifier, bool isAgreedTo);
/// Has one account, or for an empty identifier all, edited as JSON, and saves what was edited.
ExitCode edit(const Options& options, const std::string& identifier);
/// Makes accounts as a file, or standard input for "-", has them; with `prune` no others stay.
ExitCode apply(const Options& options, const std::string& path, bool prune);
/// The whole catalogue for an empty type.
ExitCode types(const Options& options, const std::string& type);
ExitCode dump(const Options& options);
/// Files, as `apply` takes them, or generations; the device's present file for an empty `after`.
ExitCode diff(const Options& options, const std::string& before, const std::string& after);
/// The generations of the accounts file; with `forget` they are removed instead.
ExitCode history(const Options& options, bool forget);
/// Puts the accounts of a generation back, and shows what that changes.
ExitCode restore(const Options& options, const std::string& generation);
/// Restores the newest generation, and undone in turn the state before it.
ExitCode undo(const Options& options);
/// `withModules` also loads the modules, each in a process of its own.
ExitCode check(const Options& options, bool withModules);
/// All dataclasses of the account's type for an empty one.
ExitCode explain(const Options& options, const std::string& identifier,
                 const std::string& dataclass);
ExitCode init(const std::string& folder);
/// Gives up after so many seconds.
ExitCode wait(const std::optional<double>& seconds);

/// What `watch` is to do.
struct WatchOptions {
  std::vector<std::string> types;  ///< only accounts of these, where there are some
  std::string since;               ///< file of the baseline to begin with; empty for now
  std::string keep;                ///< file to keep the baseline in; empty for none
  bool once = false;               ///< end after the first change
  bool bus = false;                ///< tell the message bus instead of printing
};
/// Prints a line for each change until it is stopped.
ExitCode watch(const Options& options, const WatchOptions& watching);

}  // namespace tallbook::tool
