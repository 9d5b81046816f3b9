// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>
#include <span>

#include "tallbook/Value.h"

#include "platform/propertylist/HashIndex.h"

namespace tallbook {

/// The storage of dictionaries: entries in insertion order, in one allocation with this header. A
/// few entries are searched one by one, more through an index. A removed entry leaves a gap; gaps
/// never outnumber the entries for long.
class Dictionary::Table final : public Counted {
 public:
  /// An empty table with room for `capacity` entries.
  static Ref<Table> make(std::size_t capacity);
  static void destroy(Table* table) noexcept;
  /// A frozen dictionary in the same allocation as its table, which is still to be filled: trees
  /// that are read from files consist of little else. The block lives as long as the table.
  static DictionaryRef makeDictionary(std::size_t capacity);

  std::size_t size() const noexcept { return _size; }
  /// The entries and gaps.
  std::span<Entry> entries() noexcept { return {firstEntry(), _used}; }
  bool isFull() const noexcept { return _used == _capacity; }
  bool isShared() const noexcept { return !isReferencedOnce(); }
  /// Where iteration starts: past the gaps at the front, so that emptying a dictionary from its
  /// front stays linear.
  Entry* begin() noexcept { return firstEntry() + _front; }
  Entry* end() noexcept { return firstEntry() + _used; }

  Entry* find(std::string_view key) noexcept;
  /// Adds an entry last, whose key must be new; there must be room.
  void append(String key, Value value);
  void remove(Entry* entry);
  /// A table of the same entries, none where `old` is null, that is nobody else's and has room for
  /// at least one more. The entries of an old table that is nobody else's move over, unless there
  /// is no memory for the new one.
  static Ref<Table> withRoom(const Ref<Table>& old);

  /// Adds an entry last whose key may be there already, for `settle` to sort out.
  void appendUnsettled(String key, Value value) noexcept {
    appendMade(std::move(key), [&] { return std::move(value); });
  }
  /// The same with the value that `make()` makes, in its place.
  template <class Make>
  void appendMade(String key, Make make) {
    new (end()) Entry{std::move(key), make()};
    ++_used;
    ++_size;
  }
  /// Whether no key occurs twice among the unsettled entries of a table too small for an index.
  bool isSettledAlready() const noexcept;
  /// Ends a series of `appendUnsettled`: of entries with one key the value of the last moves to
  /// the first, the others become gaps.
  void settle();

  /// Tables up to this size have no index.
  static constexpr std::size_t kMostWithoutIndex = 16;

 private:
  explicit Table(std::size_t capacity) noexcept : _capacity(static_cast<std::uint32_t>(capacity)) {}
  ~Table();
  Entry* firstEntry() noexcept { return reinterpret_cast<Entry*>(this + 1); }
  const Entry* firstEntry() const noexcept { return reinterpret_cast<const Entry*>(this + 1); }
  std::span<const Entry> entries() const noexcept { return {firstEntry(), _used}; }
  Entry* findBefore(std::size_t end, std::string_view key) noexcept;
  void leaveGap(Entry* entry) noexcept;
  void compact();
  void makeIndex();
  void indexEntry(const Entry* entry);

  std::uint32_t _capacity;
  std::uint32_t _used = 0;
  std::uint32_t _size = 0;
  std::uint32_t _front = 0;
  bool _isBehindDictionary = false;
  std::unique_ptr<HashIndex> _index;
};

}  // namespace tallbook
