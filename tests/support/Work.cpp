// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/Work.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t counted = 0;
thread_local std::size_t allocated = 0;

}  // namespace

// What the linker's --wrap makes of the calls; clang calls the second where only equality counts.
extern "C" {
int __real_memcmp(const void* a, const void* b, std::size_t size);
int __real_bcmp(const void* a, const void* b, std::size_t size);

__attribute__((visibility("default"))) int __wrap_memcmp(const void* a, const void* b,
                                                         std::size_t size) {
  ++counted;
  return __real_memcmp(a, b, size);
}

__attribute__((visibility("default"))) int __wrap_bcmp(const void* a, const void* b,
                                                       std::size_t size) {
  ++counted;
  return __real_bcmp(a, b, size);
}
}

// The program's own, in place of the library's.
void* operator new(std::size_t size) {
  allocated += size;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

std::size_t tallbook::test::comparisons() noexcept {
  return counted;
}

std::size_t tallbook::test::allocatedBytes() noexcept {
  return allocated;
}
