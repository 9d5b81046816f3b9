// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <chrono>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace tallbook {

/// What a generation of the accounts file is called: when it was kept, in UTC, such as
/// "2026-11-25T03-10-22.123456789Z", with "-migration" behind it where a migration was about to
/// replace it. Sorted as texts, names are sorted by time.
struct GenerationName {
  using Time = std::chrono::sys_time<std::chrono::nanoseconds>;

  Time kept;
  bool isOfMigration = false;

  /// Nothing where the text is no such name.
  static std::optional<GenerationName> parse(std::string_view text);
  std::string text() const;

  friend auto operator<=>(const GenerationName&, const GenerationName&) = default;
};

}  // namespace tallbook
