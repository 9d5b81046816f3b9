// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/Platform.h"

#include <atomic>
#include <mutex>

#include "platform/linux/LinuxPlatform.h"

namespace tallbook {
namespace {

std::mutex installing;
std::atomic<Platform*> installed{nullptr};
std::atomic<std::uint64_t> installations{0};

// Kept until the process ends: modules and detached threads may log through it to the last.
Platform* keep(std::unique_ptr<Platform> platform) {
  Platform* kept = platform.release();
  installed.store(kept, std::memory_order_release);
  return kept;
}

}  // namespace

Platform& Platform::current() {
  if (Platform* platform = installed.load(std::memory_order_acquire)) return *platform;
  std::scoped_lock guard(installing);
  if (Platform* platform = installed.load(std::memory_order_acquire)) return *platform;
  return *keep(makeLinuxPlatform({}));
}

void Platform::install(std::unique_ptr<Platform> platform) {
  std::scoped_lock guard(installing);
  delete installed.load(std::memory_order_acquire);
  keep(std::move(platform));
  installations.fetch_add(1, std::memory_order_acq_rel);
}

std::uint64_t Platform::generation() noexcept {
  return installations.load(std::memory_order_acquire);
}

}  // namespace tallbook
