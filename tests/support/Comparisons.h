#pragma once

#include <cstddef>

namespace tallbook::test {

/// How often this thread compared two texts, or other bytes, of the same length so far. The test
/// programs are linked so that each such comparison of the code under test is counted: whether work
/// is linear shows in the count, on every machine alike.
std::size_t comparisons() noexcept;

/// How often `act` compares.
template <class Act>
std::size_t comparisonsOf(Act&& act) {
  const std::size_t before = comparisons();
  act();
  return comparisons() - before;
}

}  // namespace tallbook::test
