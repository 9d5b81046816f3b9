// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>

namespace tallbook {

/// The most values that a tree which is read or written may have, a shared one counted wherever it
/// occurs; keys are not counted.
inline constexpr std::size_t kMostValues = 10'000'000;

/// A file has no more values than bytes, unless it refers to some containers again and again: only
/// up to this number may it do so. Otherwise a few bytes would be read that cost megabytes to save.
/// The writer, which writes every container where it occurs, and XML never do.
inline constexpr std::size_t kMostValuesBeyondBytes = 100'000;

}  // namespace tallbook
