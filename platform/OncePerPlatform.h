// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <utility>

#include "platform/Platform.h"

namespace tallbook {

/// A table made on first use and kept for the life of the process, or until another platform is
/// installed: what was read through one platform never answers for the next. Lives in a static
/// object, and is left to the system at the process's end, which it does not hold up. Thread-safe.
template <class T>
class OncePerPlatform {
 public:
  /// The table, made by `make()` on the first call. What `make` throws is passed on, and the next
  /// call makes it again.
  template <class Make>
  const T& get(Make&& make) {
    const std::uint64_t wanted = Platform::generation();
    if (_generation.load(std::memory_order_acquire) == wanted) return *_value;
    std::scoped_lock guard(_making);
    if (_generation.load(std::memory_order_relaxed) != wanted) {
      delete std::exchange(_value, new T(make()));
      _generation.store(wanted, std::memory_order_release);
    }
    return *_value;
  }

 private:
  static constexpr std::uint64_t kNever = ~std::uint64_t{0};

  std::atomic<std::uint64_t> _generation{kNever};
  std::mutex _making;
  T* _value = nullptr;
};

}  // namespace tallbook
