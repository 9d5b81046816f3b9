// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>

namespace tallbook::test {

// The test programs are linked so that what the code under test does is counted: whether work is
// linear shows in the counts, on every machine alike.

/// How often this thread compared two texts, or other bytes, of the same length so far.
std::size_t comparisons() noexcept;

/// How much memory this thread asked for so far, whatever it gave back.
std::size_t allocatedBytes() noexcept;

/// What `act` adds to a count.
template <class Act>
std::size_t workOf(Act&& act, std::size_t (*count)() noexcept = comparisons) {
  const std::size_t before = count();
  act();
  return count() - before;
}

}  // namespace tallbook::test
