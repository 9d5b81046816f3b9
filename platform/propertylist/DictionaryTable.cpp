// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/DictionaryTable.h"

#include <algorithm>
#include <new>

#include "platform/propertylist/KeyedHash.h"

namespace tallbook {

Ref<Dictionary::Table> Dictionary::Table::make(std::size_t capacity) {
  static_assert(sizeof(Table) % alignof(Entry) == 0);
  void* memory = ::operator new(sizeof(Table) + capacity * sizeof(Entry));
  return Ref<Table>(new (memory) Table(capacity));
}

DictionaryRef Dictionary::Table::makeDictionary(std::size_t capacity) {
  static_assert(sizeof(Dictionary) % alignof(Table) == 0);
  const std::size_t tableSize = sizeof(Table) + capacity * sizeof(Entry);
  auto* const block = static_cast<char*>(::operator new(sizeof(Dictionary) + tableSize));
  Ref<Table> table(new (block + sizeof(Dictionary)) Table(capacity));
  table->_isBehindDictionary = true;
  auto* const dictionary = new (block) Dictionary(std::move(table), true);
  dictionary->_isBeforeTable = true;
  return DictionaryRef(dictionary);
}

void Dictionary::Table::destroy(Table* table) noexcept {
  char* const block =
      reinterpret_cast<char*>(table) - (table->_isBehindDictionary ? sizeof(Dictionary) : 0);
  table->~Table();
  ::operator delete(block);
}

Dictionary::Table::~Table() {
  std::destroy_n(firstEntry(), _used);
}

Dictionary::Entry* Dictionary::Table::find(std::string_view key) noexcept {
  if (!_index) return findBefore(_used, key);
  const std::uint32_t position =
      _index->find(keyedHash(key), [&](std::uint32_t at) { return firstEntry()[at].key == key; });
  return position == HashIndex::kNone ? nullptr : firstEntry() + position;
}

Dictionary::Entry* Dictionary::Table::findBefore(std::size_t end, std::string_view key) noexcept {
  Entry* const last = firstEntry() + end;
  Entry* const found =
      std::find_if(firstEntry(), last, [key](const Entry& entry) { return entry.key == key; });
  return found == last ? nullptr : found;
}

void Dictionary::Table::append(String key, Value value) {
  appendUnsettled(std::move(key), std::move(value));
  if (_index) {
    indexEntry(end() - 1);
  } else if (_used > kMostWithoutIndex) {
    compact();
  }
}

void Dictionary::Table::remove(Entry* entry) {
  leaveGap(entry);
  if (_used > kMostWithoutIndex && _size < _used / 2) compact();
}

void Dictionary::Table::leaveGap(Entry* entry) noexcept {
  *entry = Entry();
  --_size;
  while (_front < _used && !firstEntry()[_front].key) ++_front;
}

void Dictionary::Table::compact() {
  Entry* const dense = std::remove_if(firstEntry(), end(), [](const Entry& e) { return !e.key; });
  std::destroy(dense, end());
  _used = _size;
  _front = 0;
  _index.reset();
  if (_used <= kMostWithoutIndex) return;
  makeIndex();
  for (const Entry& entry : entries()) indexEntry(&entry);
}

// With room for all entries that the table can have: filing one needs no memory.
void Dictionary::Table::makeIndex() {
  _index = std::make_unique<HashIndex>(_capacity);
}

void Dictionary::Table::indexEntry(const Entry* entry) {
  _index->insert(keyedHash(entry->key), static_cast<std::uint32_t>(entry - firstEntry()));
}

Ref<Dictionary::Table> Dictionary::Table::withRoom(const Ref<Table>& old) {
  constexpr std::size_t kLeastRoom = 4;
  if (!old) return make(kLeastRoom);
  Ref<Table> table = make(old->_size + std::max<std::size_t>(kLeastRoom, old->_size / 2));
  if (old->_size > kMostWithoutIndex) table->makeIndex();
  const bool mayMove = !old->isShared();
  for (Entry& entry : old->entries()) {
    if (!entry.key) continue;
    if (mayMove) {
      table->appendUnsettled(std::move(entry.key), std::move(entry.value));
    } else {
      table->appendUnsettled(entry.key, entry.value);
    }
    if (table->_index) table->indexEntry(table->end() - 1);
  }
  return table;
}

bool Dictionary::Table::isSettledAlready() const noexcept {
  const std::span<const Entry> all = entries();
  for (std::size_t i = 1; i < all.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (all[i].key == all[j].key) return false;
    }
  }
  return true;
}

void Dictionary::Table::settle() {
  const bool indexed = _used > kMostWithoutIndex;
  if (indexed) makeIndex();
  for (Entry& entry : entries()) {
    const auto position = static_cast<std::size_t>(&entry - firstEntry());
    Entry* const earlier = indexed ? find(entry.key) : findBefore(position, entry.key);
    if (earlier) {
      std::swap(earlier->value, entry.value);
      leaveGap(&entry);
    } else if (indexed) {
      indexEntry(&entry);
    }
  }
}

}  // namespace tallbook
