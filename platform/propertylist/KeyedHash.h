// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdint>
#include <string_view>

namespace tallbook {

/// A hash of `bytes` under a key of this process's own, so that nobody can prepare a file whose
/// strings all collide. All of its bits are good.
std::uint64_t keyedHash(std::string_view bytes) noexcept;

/// The same for the standard library's tables of texts that come from a file.
struct KeyedStringHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const noexcept { return keyedHash(text); }
};

}  // namespace tallbook
