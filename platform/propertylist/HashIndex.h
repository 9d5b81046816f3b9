// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tallbook {

/// Finds positions in a list by the hash of what lies there; what lies there, and when two of them
/// are equal, only the caller knows. A position cannot be taken out again.
class HashIndex {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  explicit HashIndex(std::size_t expected = 0);

  /// The position filed under `hash` for which `isWanted(position)` holds; else kNone.
  template <class IsWanted>
  std::uint32_t find(std::uint64_t hash, IsWanted isWanted) const {
    const auto part = static_cast<std::uint32_t>(hash);
    for (std::size_t at = part & _mask;; at = (at + 1) & _mask) {
      const Slot& slot = _slots[at];
      if (slot.position == kNone) return kNone;
      if (slot.hash == part && isWanted(slot.position)) return slot.position;
    }
  }
  void insert(std::uint64_t hash, std::uint32_t position);
  /// Fetches from memory where `find` and `insert` of the hash will begin.
  void prefetch(std::uint64_t hash) const noexcept {
    __builtin_prefetch(&_slots[static_cast<std::uint32_t>(hash) & _mask], 1);
  }
  /// Whether it is too large for the processor's inner caches, so that fetching ahead pays.
  bool isLarge() const noexcept { return _slots.size() * sizeof(Slot) > std::size_t{1} << 19; }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t position = kNone;
  };
  void place(Slot slot) noexcept;

  std::vector<Slot> _slots;  // a power of two of them, at most three quarters in use
  std::size_t _mask;
  std::size_t _used = 0;
};

}  // namespace tallbook
