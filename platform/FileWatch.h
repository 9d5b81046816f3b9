// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <string>
#include <system_error>

namespace tallbook {

/// Tells when the file under a path may have become another one: it was put in place, replaced,
/// written to, removed, moved, or given other permissions, or that happened to a folder on the way
/// to it. Nothing need lie there yet, the folders included. It takes no thread and no time while
/// nothing happens.
class FileWatch {
 public:
  virtual ~FileWatch() = default;

  /// Becomes readable when there may be something to take; the same for the object's whole life.
  /// For waiting only: nobody reads from it or closes it.
  virtual int descriptor() const noexcept = 0;
  /// Whether the file may be another one than at the last call, or at the beginning. What happens
  /// after the call makes the descriptor readable anew, so whoever looks at the file now misses
  /// nothing.
  virtual bool takeNotices() = 0;
  /// Why the next change may go unnoticed, such as a folder that may not be read; else none.
  virtual std::error_code problem() const noexcept = 0;
};

/// The system's notices about files.
class FileWatching {
 public:
  virtual ~FileWatching() = default;

  /// Watches from now on. Null, with `error`, where the system has no watch to give.
  virtual std::unique_ptr<FileWatch> watch(const std::string& path, std::error_code& error) = 0;
};

}  // namespace tallbook
