// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Export.h"
#include "tallbook/Value.h"

namespace tallbook {

/// The accounts file as it was before a save replaced it.
struct AccountsGeneration {
  /// Such as "2026-11-25T03-10-22.123456789Z": the time, and "-migration" behind it where a
  /// migration replaced the file. Later ones have greater names.
  std::string name;
  std::chrono::sys_time<std::chrono::nanoseconds> kept;  ///< when it was about to be replaced
  std::uint64_t size = 0;                                ///< bytes
};

/// The last generations of the accounts file. Saves keep them on the way: the first of those that
/// follow each other within a minute, as many as the device prefers. All operations look at the
/// files anew, and are thread-safe; other processes keep and remove generations at the same time.
class TALLBOOK_EXPORT AccountsHistory {
 public:
  /// The generations there are, or why nobody can tell.
  struct List {
    std::vector<AccountsGeneration> generations;  ///< the newest first
    std::string problem;  ///< on one line, why they could not be listed; else empty
  };
  /// No generations, without a problem, where none was ever kept.
  [[nodiscard]] static List list();

  /// What a generation holds, or why nobody can tell.
  struct Content {
    DictionaryRef accountsFile;  ///< the file's top level; null where there is a problem
    std::string problem;         ///< on one line, why it could not be read; else empty
  };
  /// What the generation of that name holds. Throws what `propertyListFromBytes` does.
  [[nodiscard]] static Content content(std::string_view name);

  /// What could not be removed.
  struct Remaining {
    std::string name;     ///< of a file in the generations' folder; empty for the folder itself
    std::string problem;  ///< on one line, why it could not be removed
  };
  /// Removes all generations, and whatever a save that was killed left with them, so that nothing
  /// of a removed account stays there. What could not be removed; nothing when all is gone.
  [[nodiscard]] static std::vector<Remaining> forget();
};

}  // namespace tallbook
