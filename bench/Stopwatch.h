#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <malloc.h>
#include <vector>

namespace tallbook::bench {

/// Wall-clock nanoseconds that one call of `work` takes. What `work` returns is destroyed after
/// the clock has stopped, and memory that earlier work gave back goes to the system before it
/// starts: the allocator's care for another work's garbage is no part of this one.
template <class Work>
double nanoseconds(Work&& work) {
  malloc_trim(0);
  const auto start = std::chrono::steady_clock::now();
  [[maybe_unused]] const auto result = work();
  const auto end = std::chrono::steady_clock::now();
  return std::chrono::duration<double, std::nano>(end - start).count();
}

/// The middle one of several figures, of which there must be some.
inline double median(std::vector<double> figures) {
  const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
  std::nth_element(figures.begin(), middle, figures.end());
  return *middle;
}

}  // namespace tallbook::bench
