// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/HashIndex.h"

#include <bit>
#include <utility>

namespace tallbook {
namespace {

constexpr std::size_t kFewestSlots = 32;

}  // namespace

HashIndex::HashIndex(std::size_t expected)
    : _slots(std::bit_ceil(kFewestSlots + expected + expected / 3)), _mask(_slots.size() - 1) {}

void HashIndex::insert(std::uint64_t hash, std::uint32_t position) {
  if ((_used + 1) * 4 > _slots.size() * 3) {
    std::vector<Slot> old = std::exchange(_slots, std::vector<Slot>(_slots.size() * 2));
    _mask = _slots.size() - 1;
    for (const Slot& slot : old) {
      if (slot.position != kNone) place(slot);
    }
  }
  place({static_cast<std::uint32_t>(hash), position});
  ++_used;
}

void HashIndex::place(Slot slot) noexcept {
  std::size_t at = slot.hash & _mask;
  while (_slots[at].position != kNone) at = (at + 1) & _mask;
  _slots[at] = slot;
}

}  // namespace tallbook
