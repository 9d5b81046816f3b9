// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "tallbook/AccountsManager.h"
#include "tallbook/Export.h"
#include "tallbook/Value.h"

namespace tallbook {

/// Where a migration stands.
struct MigrationStage {
  /// What has ended: "accounts file" (loading it), "legacy Exchange file" and "legacy mail file"
  /// (converting it), a version step by its system build, such as "7A150", and "saving".
  std::string name;
  /// The store as it is now. Accounts that were not in it when the stage before ended come from
  /// this one.
  const AccountsManager& store;
  /// Whether the accounts file holds what the store holds.
  bool isSaved = false;
};

/// What became of a legacy file, or of what stands in its place.
struct LegacyFileEnd {
  /// Only a file whose accounts the accounts file holds is removed.
  enum class Kind { Removed, MovedAside, Kept };

  std::string path;           ///< where it was
  Kind kind = Kind::Removed;  ///< says which of the texts below is there
  std::string why;            ///< on one line; empty for one that was converted and removed
  std::string movedTo;        ///< the path of one that was moved aside
};

/// Hears from a migration what it does, while it does it. What a look at the store tells is not
/// told: whoever wants to know what a stage changed compares.
///
/// A record is known by its property dictionary, which is one object for as long as the store has
/// the account: it may be given another identifier, type or parent. Children are the dictionaries
/// under "ChildAccounts".
class TALLBOOK_EXPORT MigrationObserver {
 public:
  virtual ~MigrationObserver();

  /// The accounts file before the migration could be kept neither as a copy nor as a generation.
  /// Asked before anything is changed; false ends the migration, which answers NO then.
  virtual bool mayGoOnWithoutCopy([[maybe_unused]] const std::string& why) { return true; }
  /// The stage ended; what the observer wants to know of the store it reads before it returns.
  virtual void stageEnded([[maybe_unused]] const MigrationStage& stage) {}

  // Told before the end of the stage that they belong to.

  /// The account is left out by loading, or leaves the store, for this reason. It is told once for
  /// an account with its children.
  virtual void accountLeft([[maybe_unused]] const Value& record,
                           [[maybe_unused]] const std::string& why) {}
  /// An account goes on as another dictionary.
  virtual void recordReplaced([[maybe_unused]] const DictionaryRef& before,
                              [[maybe_unused]] const DictionaryRef& now) {}
  /// No account was made of a description in a legacy file. Of a dictionary the keys have their
  /// present names.
  virtual void descriptionNotConverted([[maybe_unused]] const Value& description,
                                       [[maybe_unused]] const std::string& why) {}

  // Told after the last stage.

  /// A legacy file, or what stands in place of the removal sentinel, was dealt with.
  virtual void legacyFileEnded([[maybe_unused]] const LegacyFileEnd& end) {}
};

}  // namespace tallbook
