// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/String.h"

#include "platform/propertylist/HashIndex.h"
#include "platform/propertylist/KeyedHash.h"

namespace tallbook {

/// What a store files under identifiers, in the order in which they were first filed.
///
/// The entries lie one after the other in a list with a hash index beside it: loading a store is
/// mostly filling such tables, and an allocation for each entry would be most of what that costs.
/// For the same reason entries may be appended without a look into the index, which takes them up
/// when something is looked up next.
template <class T>
class IdentifierTable {
 public:
  void reserve(std::size_t count) { _entries.reserve(count); }
  /// Files the value under the identifier, which must not be null, in the place of what is there.
  void append(const String& identifier, T value) {
    _entries.push_back({identifier, std::move(value)});
  }
  /// The value filed under the identifier, which must not be null; a new one where there is none.
  T& operator[](const String& identifier) {
    takeUp();
    const std::uint64_t hash = keyedHash(identifier);
    const std::uint32_t at = indexedPositionOf(identifier, hash);
    if (at != HashIndex::kNone) return _entries[at].value;
    _entries.push_back({identifier, T()});
    _index.insert(hash, static_cast<std::uint32_t>(_indexed));
    ++_indexed;
    return _entries.back().value;
  }
  /// Null for an unknown identifier; valid until the table changes.
  T* find(std::string_view identifier) {
    const std::uint32_t at = positionOf(identifier);
    return at == HashIndex::kNone ? nullptr : &_entries[at].value;
  }
  const T* find(std::string_view identifier) const {
    return const_cast<IdentifierTable*>(this)->find(identifier);
  }
  bool contains(std::string_view identifier) const { return find(identifier) != nullptr; }
  /// Removes what is filed under the identifier; nothing for an unknown one.
  void erase(std::string_view identifier) {
    const std::uint32_t at = positionOf(identifier);
    if (at != HashIndex::kNone) leaveGap(_entries[at]);
    if (_gaps > _entries.size() / 2) compact();
  }

  std::size_t size() const {
    const_cast<IdentifierTable*>(this)->takeUp();
    return _entries.size() - _gaps;
  }
  /// Whether another table has the same identifiers in the same places. Tables filled from one
  /// list mostly do, and need no look-ups to be compared.
  template <class Other>
  bool isFiledLike(const IdentifierTable<Other>& other) const {
    return std::ranges::equal(_entries, other._entries, {}, &Entry::identifier,
                              &IdentifierTable<Other>::Entry::identifier);
  }
  /// Calls `visit(identifier, value, otherValue)` for each entry of two such tables.
  template <class Other, class Visit>
  void forEachBeside(const IdentifierTable<Other>& other, Visit visit) const {
    for (std::size_t at = 0; at < _entries.size(); ++at) {
      const auto& [identifier, value] = _entries[at];
      if (identifier) visit(identifier, value, other._entries[at].value);
    }
  }
  /// Calls `visit(identifier, value)` for each entry, in order; `visit` must not change the table.
  template <class Visit>
  void forEach(Visit visit) const {
    const_cast<IdentifierTable*>(this)->takeUp();
    for (const Entry& entry : _entries) {
      if (entry.identifier) visit(entry.identifier, entry.value);
    }
  }

 private:
  template <class Other>
  friend class IdentifierTable;

  struct Entry {
    String identifier;  // null in the gap that a removed entry leaves
    T value;
  };

  std::uint32_t positionOf(std::string_view identifier) {
    // A null identifier is nobody's, the empty one may be somebody's.
    if (!identifier.data()) return HashIndex::kNone;
    if (_entries.empty()) return HashIndex::kNone;  // as the children of most stores
    takeUp();
    return indexedPositionOf(identifier, keyedHash(identifier));
  }
  std::uint32_t indexedPositionOf(std::string_view identifier, std::uint64_t hash) const {
    return _index.find(hash,
                       [&](std::uint32_t at) { return _entries[at].identifier == identifier; });
  }
  // Takes appended entries up into the index.
  void takeUp() {
    if (_indexed == 0) _index = HashIndex(_entries.capacity());
    for (; _indexed < _entries.size(); ++_indexed) {
      Entry& entry = _entries[_indexed];
      if (!entry.identifier) continue;
      const std::uint64_t hash = keyedHash(entry.identifier);
      const std::uint32_t earlier = indexedPositionOf(entry.identifier, hash);
      if (earlier == HashIndex::kNone) {
        _index.insert(hash, static_cast<std::uint32_t>(_indexed));
      } else {
        _entries[earlier].value = std::move(entry.value);
        leaveGap(entry);
      }
    }
  }
  void leaveGap(Entry& entry) {
    entry = Entry();
    ++_gaps;
  }
  // Gaps never outnumber the entries for long, so that walking the table stays linear.
  void compact() {
    std::erase_if(_entries, [](const Entry& entry) { return !entry.identifier; });
    // The index is made for the entries' capacity: few entries must not pay for what many left.
    _entries.shrink_to_fit();
    _gaps = 0;
    _indexed = 0;
  }

  std::vector<Entry> _entries;
  HashIndex _index;
  std::size_t _indexed = 0;  // how many entries the index knows
  std::size_t _gaps = 0;
};

}  // namespace tallbook
