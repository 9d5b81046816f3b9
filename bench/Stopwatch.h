// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <malloc.h>
#include <utility>
#include <vector>

namespace tallbook::bench {

/// Wall-clock nanoseconds that one call of `work` takes. What `work` returns is destroyed after
/// the clock has stopped.
template <class Work>
double nanoseconds(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  [[maybe_unused]] const auto result = work();
  const auto end = std::chrono::steady_clock::now();
  return std::chrono::duration<double, std::nano>(end - start).count();
}

/// The same on a tidy heap: memory that earlier work gave back goes to the system first. The
/// allocator's care for another work's garbage is no part of this one.
template <class Work>
double nanosecondsOnATidyHeap(Work&& work) {
  malloc_trim(0);
  return nanoseconds(std::forward<Work>(work));
}

/// The middle one of several figures, of which there must be some.
inline double median(std::vector<double> figures) {
  const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
  std::nth_element(figures.begin(), middle, figures.end());
  return *middle;
}

}  // namespace tallbook::bench
