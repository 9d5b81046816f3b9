#pragma once

#include <string>
#include <vector>

#include "tools/common/Outcome.h"

namespace tallbook::tool {

/// What holds for every command.
struct Options {
  bool json = false;               ///< print for a program
  bool replaceUnreadable = false;  ///< a file that is no accounts file may be replaced
  bool givesUpUpgrade = false;  ///< a file of an older version may be saved, which ends its upgrade
};

// Each command prints its result on standard output, and throws Failure where there is none.

/// The accounts, children below their parents; only those of the types where some are given.
ExitCode list(const Options& options, const std::vector<std::string>& types);
ExitCode show(const Options& options, const std::string& identifier);
ExitCode get(const Options& options, const std::string& identifier, const std::string& key);
/// `kind` as `valueFromText` takes it; empty for the kind that the key has now, else a string.
ExitCode set(const Options& options, const std::string& identifier, const std::string& key,
             const std::string& text, const std::string& kind);
ExitCode unset(const Options& options, const std::string& identifier, const std::string& key);
ExitCode setEnabled(const Options& options, const std::string& identifier,
                    const std::string& dataclass, bool enabled);
/// Prints the new record's identifier. `name` and `parent` may be empty.
ExitCode add(const Options& options, const std::string& type, const std::string& className,
             const std::string& name, const std::string& parent);
ExitCode remove(const Options& options, const std::string& identifier);
/// The whole catalogue for an empty type.
ExitCode types(const Options& options, const std::string& type);
ExitCode dump(const Options& options);
/// Files or generations; the device's present file for an empty `after`.
ExitCode diff(const Options& options, const std::string& before, const std::string& after);
/// The generations of the accounts file; with `forget` they are removed instead.
ExitCode history(const Options& options, bool forget);
/// Puts the accounts of a generation back, and shows what that changes.
ExitCode restore(const Options& options, const std::string& generation);
/// Restores the newest generation, and undone in turn the state before it.
ExitCode undo(const Options& options);
ExitCode check(const Options& options);
ExitCode explain(const Options& options, const std::string& identifier,
                 const std::string& dataclass);
ExitCode init(const std::string& folder);
ExitCode wait();

}  // namespace tallbook::tool
