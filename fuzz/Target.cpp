// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "fuzz/Target.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include "fuzz/Check.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TALLBOOK_COUNTS_MEMORY
#include <sanitizer/allocator_interface.h>
#endif
#endif

namespace tallbook::fuzz {
namespace {

// What an input may cost: a second, which instrumented code takes five to seven times over, and
// memory. The engine's own limits are of no use for that: its clock goes on while other processes
// run, and its count of memory is of what the sanitizer keeps as well.
constexpr double kMostSeconds = 5;
constexpr std::size_t kMostMemory = std::size_t{256} << 20;

double secondsOfThread() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

#ifdef TALLBOOK_COUNTS_MEMORY
bool isCounting = false;
std::size_t allocated = 0;

void countAllocation(const volatile void*, std::size_t size) {
  if (!isCounting) return;
  allocated += size;
  if (allocated < kMostMemory) return;
  isCounting = false;  // what the failure itself takes
  check(false, "an input takes no more than 256 MiB");
}

void countRelease(const volatile void* memory) {
  if (!isCounting || !memory) return;
  const std::size_t size = __sanitizer_get_allocated_size(memory);
  // What was made before the input may go with it.
  allocated -= size < allocated ? size : allocated;
}

const int installed = __sanitizer_install_malloc_and_free_hooks(countAllocation, countRelease);
#endif

class Bounds {
 public:
  Bounds() {
#ifdef TALLBOOK_COUNTS_MEMORY
    check(installed > 0, "allocations can be counted");
    allocated = 0;
    isCounting = true;
#endif
  }
  ~Bounds() {
#ifdef TALLBOOK_COUNTS_MEMORY
    isCounting = false;
#endif
    const double seconds = secondsOfThread() - _begin;
    check(seconds < kMostSeconds,
          "an input takes no more than a second, instrumented five; it took " +
              std::to_string(seconds));
  }
  Bounds(const Bounds&) = delete;
  Bounds& operator=(const Bounds&) = delete;

 private:
  double _begin = secondsOfThread();
};

}  // namespace
}  // namespace tallbook::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const tallbook::fuzz::Bounds bounds;
  tallbook::fuzz::tryInput({reinterpret_cast<const char*>(data), size});
  return 0;
}
