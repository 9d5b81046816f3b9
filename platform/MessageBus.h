// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <variant>
#include <vector>

namespace tallbook {

/// The message bus of the device, for one-way notices to whoever listens.
class MessageBus {
 public:
  struct Signal {
    const char* path;
    const char* interface;
    const char* member;
  };
  /// A text, or a list of texts. A text ends at its first NUL.
  using Argument = std::variant<std::string, std::vector<std::string>>;
  using Arguments = std::vector<Argument>;

  virtual ~MessageBus() = default;

  /// Sends the signal once with each of the argument lists, over a connection of its own, and waits
  /// at most a second until the bus has them. Whether it has; nobody can tell who hears them. False
  /// where there is no bus.
  virtual bool emit(const Signal& signal, const std::vector<Arguments>& each) = 0;
};

}  // namespace tallbook
