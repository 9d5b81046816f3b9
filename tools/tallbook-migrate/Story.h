// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tallbook/MigrationObserver.h"

namespace tallbook::migrate {

/// What became of one account, from where it was first seen to where it is now.
struct AccountStory {
  enum class Place {
    InFile,
    InFileAsBefore,  ///< what happened to it since a stage, or at all, did not reach the file
    Unloadable,      ///< in the file, but no load accepts it
    NotSaved,        ///< in the store alone, which is gone
    InLegacyFile,
    Gone,
    Unexplained  ///< gone, and the migration told no reason
  };
  struct Step {
    std::string stage;
    std::vector<std::string> what;
  };

  Place place = Place::InFile;
  std::string name, type, identifier;
  bool isIdentifierNew = false;  ///< made by the migration: another one every time
  std::string from;              ///< the stage that it comes from
  std::vector<Step> steps;       ///< what each later one did to it
  std::string why;               ///< why it is where it is, where that needs a reason
  std::vector<AccountStory> children;

  bool isIn(Place where) const { return place == where; }
};

/// Hears a migration and puts together what became of every account. Nothing here knows what any
/// step does: a stage's changes are the differences of an account's record before and after it.
class Story final : public MigrationObserver {
 public:
  /// `goesOnWithoutCopy` is the answer where the accounts file cannot be kept.
  explicit Story(bool goesOnWithoutCopy) : _goesOnWithoutCopy(goesOnWithoutCopy) {}

  bool mayGoOnWithoutCopy(const std::string& why) override;
  void stageEnded(const MigrationStage& stage) override;
  void accountLeft(const Value& record, const std::string& why) override;
  void recordReplaced(const DictionaryRef& before, const DictionaryRef& now) override;
  void descriptionNotConverted(const Value& description, const std::string& why) override;
  void legacyFileEnded(const LegacyFileEnd& end) override { _legacyFiles.push_back(end); }

  /// Unexplained ones first, then those of the store in its order, then the others.
  std::vector<AccountStory> accounts() const;
  const std::vector<LegacyFileEnd>& legacyFiles() const noexcept { return _legacyFiles; }
  /// Whether anything was heard of a store.
  bool hasBegun() const noexcept { return !_stages.empty(); }
  /// The stage that accounts of the accounts file come from.
  std::string nameOfLoading() const { return hasBegun() ? _stages.front() : ""; }
  /// Whether the accounts file holds what the store held in the end.
  bool isSaved() const noexcept { return hasBegun() && _lastSaved == _stages.size() - 1; }
  /// Why not, and what the file holds instead; for one that began.
  std::string whyNotSaved() const;

 private:
  using Row = std::size_t;
  struct Account {
    DictionaryRef record;    ///< what it is known by; null for one that no store had
    DictionaryRef snapshot;  ///< the record at the end of the last stage; null for none
    std::size_t born = 0;    ///< the stage that it comes from
    std::size_t changed = 0;
    std::size_t seen = 0;
    std::size_t walked = 0;  ///< the last stage that looked at its children
    std::optional<std::size_t> left;
    bool isConverted = true;
    bool isIdentifierNew = false;
    std::optional<Row> parent;
    std::string why;
    /// What a stage did; put into words when the migration is over.
    struct Note {
      std::size_t stage;
      DictionaryRef before, now;
      std::string moved;  ///< where to, in words; else empty
    };
    std::vector<Note> notes;
  };

  /// What is known of each account when the migration is over.
  struct Picture {
    std::vector<std::vector<Row>> children;
    std::vector<DictionaryRef> written;  ///< the record as it was last saved; null for none
  };

  Account& addTold(const Value& record, const std::string& why);
  /// The account whose record it is, made where nobody had it before.
  Row rowOf(const DictionaryRef& record);
  void visit(Row row, std::optional<Row> parent);
  void visitChildren(Row row);
  void lookAtGiven(Row row, const BasicAccount& account, bool isSaved);
  void note(Account& account, const DictionaryRef& before, std::string moved = {});
  void settleMissing();
  AccountStory::Place placeOf(const Account& account) const;
  AccountStory told(Row row, const Picture& picture) const;
  /// The name of the account whose record this is, null for none.
  std::string nameOf(const Account& account, const DictionaryRef& record) const;
  std::string nameOf(Row row) const { return nameOf(_accounts[row], _accounts[row].snapshot); }
  std::size_t stage() const noexcept { return _stages.size(); }

  bool _goesOnWithoutCopy;
  std::vector<std::string> _stages;
  std::optional<std::size_t> _lastSaved;
  std::string _saveFailure;
  std::vector<Account> _accounts;
  std::unordered_map<const Dictionary*, Row> _rows;
  std::vector<Row> _order;         ///< the top level of the store at the end of the last stage
  std::vector<Value> _written;     ///< the records as they were last saved
  std::vector<Row> _writtenOrder;  ///< whose they are
  std::unordered_map<Row, std::string> _unloadable;
  std::vector<LegacyFileEnd> _legacyFiles;
};

}  // namespace tallbook::migrate
