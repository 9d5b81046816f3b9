#include "tests/support/Comparisons.h"

namespace {

thread_local std::size_t counted = 0;

}  // namespace

// What the linker's --wrap makes of the calls; clang calls the second where only equality counts.
extern "C" {
int __real_memcmp(const void* a, const void* b, std::size_t size);
int __real_bcmp(const void* a, const void* b, std::size_t size);

int __wrap_memcmp(const void* a, const void* b, std::size_t size) {
  ++counted;
  return __real_memcmp(a, b, size);
}

int __wrap_bcmp(const void* a, const void* b, std::size_t size) {
  ++counted;
  return __real_bcmp(a, b, size);
}
}

std::size_t tallbook::test::comparisons() noexcept {
  return counted;
}
