// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/FileReplacement.h"
#include "tests/support/MemoryFileSystem.h"

namespace tallbook::test {

/// A save as the store makes it, once: reads the file, none being empty, and replaces it by what
/// `change` makes of its content.
Replacement changeFile(Folder& folder, const std::string& name,
                       const std::function<std::string(const std::string&)>& change);

/// What one file operation answered; which of the members say it depends on the operation.
struct Answer {
  std::error_code error;
  FileContent content;
  FileLook look;
  std::string text;
};

/// Processes that each add a mark to one file by `replaceIfUnchanged`, again and again until it is
/// there, in every order in which their file operations can follow each other.
///
/// A process does what its file operations answered to it and nothing else. So no threads are
/// needed: its answers so far are its whole memory, and its next operation is found by running its
/// code from the beginning with those. Orders that lead to the same disk and the same memories go
/// on alike and are followed once.
///
/// That a process is stopped or killed needs no case of its own: it is one that does nothing from
/// then on, as every process does in some order after each of its operations. Therefore what must
/// hold at the end is asked in every state of those whose end it is, and from every state each
/// process must come to its end without the others.
///
/// Making the temporary file is one operation, as nobody else knows its name before it is claimed.
/// Flushes are none: they change nothing that a process could see.
class Interleavings {
 public:
  static constexpr std::size_t kMostProcesses = 3;

  struct Start {
    std::size_t processes = 2;
    bool isFilePresent = true;
    unsigned marks = 1;     ///< that each process adds, one after the other
    unsigned failures = 0;  ///< up to so many of the first process's operations fail, whichever
    bool hasNotes = true;   ///< whether the file system has symbolic links
  };
  struct Figures {
    std::size_t states = 0;
    double orders = 0;           ///< of the operations, from the start to where all have ended
    unsigned longestAlone = 0;   ///< operations of one process to its end, from any state
    unsigned mostAttempts = 0;   ///< of one process
    unsigned mostLostMarks = 0;  ///< of processes that were told `Done`, in any one end
  };

  explicit Interleavings(const Start& start) : _start(start) {}
  /// Throws std::runtime_error, with the operations that lead there, where a mark is in the file
  /// twice; where one was reported as done and is not there (with links), or as failed and is
  /// there; where a process goes on for ever; and where something stays behind though nobody was
  /// stopped and nothing failed.
  Figures explore();

 private:
  /// A process between two operations: what it knows.
  struct Life {
    std::size_t process = 0;
    unsigned attempt = 1;
    unsigned added = 0;  ///< marks of which it was told `Done`
    unsigned failures = 0;
    std::vector<Answer> answers;         ///< in this attempt; what came before is forgotten
    std::optional<Replacement> outcome;  ///< of all, once it has ended
  };
  /// Disks and lives by their numbers here.
  struct State {
    std::uint32_t disk = 0;
    std::array<std::uint32_t, kMostProcesses> lives{};
    friend bool operator==(const State&, const State&) = default;
  };
  struct Hash {
    std::size_t operator()(const State& state) const;
  };
  /// What follows from a state.
  struct Future {
    double orders = 0;
    std::array<unsigned, kMostProcesses> alone{};
  };
  struct Step {
    std::uint32_t life = 0;
    std::uint32_t disk = 0;
    std::string what;
  };

  const Future& follow(const State& state);
  const std::vector<Step>& stepsOf(std::uint32_t life, std::uint32_t disk);
  Step step(const Life& life, const MemoryFileSystem::Disk& disk, bool fails);
  void check(const State& state);
  void checkNothingIsLost(const std::string& before, const std::string& after) const;
  std::uint32_t numberOf(MemoryFileSystem::Disk disk);
  std::uint32_t numberOf(Life life);
  [[noreturn]] void complain(const std::string& what) const;

  const Start _start;
  Figures _figures;
  std::vector<MemoryFileSystem::Disk> _disks;
  std::vector<std::string> _marks;  ///< on each disk
  std::vector<Life> _lives;
  std::map<std::string, std::uint32_t> _diskNumbers;
  std::map<std::string, std::uint32_t> _lifeNumbers;
  std::unordered_map<std::uint64_t, std::vector<Step>> _steps;  ///< by life and disk
  std::unordered_map<State, Future, Hash> _futures;
  std::vector<const Step*> _path;  ///< to the state that is looked at
};

}  // namespace tallbook::test
