// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <functional>
#include <limits>

#include "platform/FileSystem.h"

namespace tallbook {

/// Thrown where a process would have ended. Derives from nothing, so that no handler of ordinary
/// failures takes it.
struct Stopped {};

/// Another file system that fails or stops at its n-th operation, the first being 1. Everything
/// that asks something of the system is an operation, looks and reads included; a fresh name is
/// not.
class FailingFileSystem final : public FileSystem {
 public:
  explicit FailingFileSystem(FileSystem& inner) : _inner(inner) {}

  /// The n-th operation fails with `error` and does nothing; the others work.
  void failAt(std::size_t n, std::error_code error);
  /// Every operation of this name does, as on a file system that does not have it.
  void failEvery(const std::string& name, std::error_code error);
  /// The n-th operation ends the process: it throws `Stopped`, and so does everything after it. A
  /// file that was being written stays behind with half its bytes. What runs while `Stopped`
  /// unwinds the stack gets errors and changes nothing.
  void stopAt(std::size_t n);
  /// `what` is called when the n-th operation is asked for; then it is done like the others.
  void callAt(std::size_t n, std::function<void()> what);
  /// Forgets failures, stops, calls and the count.
  void heal();
  /// How many operations were asked for, and what each was, such as "rename".
  std::size_t operations() const { return _names.size(); }
  const std::vector<std::string>& names() const { return _names; }

  std::string readFile(const std::string& path, std::error_code& error) const override;
  std::unique_ptr<Folder> openFolder(const std::string& path,
                                     std::error_code& error) const override;
  std::error_code createDirectories(const std::string& path, unsigned mode) override;

  /// Counts an operation: the error to fail with, none to go on; stops where it is time, after
  /// calling `beforeStop`.
  std::error_code next(
      const char* name, const std::function<void()>& beforeStop = [] {}) const;

 private:
  static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

  FileSystem& _inner;
  mutable std::vector<std::string> _names;
  std::size_t _failAt = kNever;
  std::string _failEvery;
  std::size_t _stopAt = kNever;
  std::size_t _callAt = kNever;
  std::function<void()> _call;
  std::error_code _error;
  mutable bool _stopped = false;
};

}  // namespace tallbook
