// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Value.h"

#include "platform/propertylist/DictionaryTable.h"

namespace tallbook {

Dictionary::Dictionary(Ref<Table> table, bool frozen) noexcept
    : _table(std::move(table)), _frozen(frozen) {}
Dictionary::~Dictionary() = default;

DictionaryRef Dictionary::make() {
  return DictionaryRef(new Dictionary(nullptr, false));
}

DictionaryRef Dictionary::make(std::initializer_list<std::pair<String, Value>> entries) {
  DictionaryRef dictionary = make();
  for (const auto& [key, value] : entries) dictionary->set(key, value);
  return dictionary;
}

DictionaryRef Dictionary::makeFrozen(std::vector<Entry> entries) {
  Ref<Table> table = entries.empty() ? nullptr : Table::make(entries.size());
  for (Entry& entry : entries) {
    if (!entry.key || !entry.value.isImmutable()) {
      throw InternalConsistencyFailure(
          "A frozen dictionary was made of null keys or containers that can change");
    }
    table->appendUnsettled(std::move(entry.key), std::move(entry.value));
  }
  if (table) table->settle();
  return DictionaryRef(new Dictionary(std::move(table), true));
}

void Dictionary::destroy(Dictionary* dictionary) noexcept {
  if (!dictionary->_isBeforeTable) {
    delete dictionary;
    return;
  }
  // Its memory goes with the table's last reference, which may be this one.
  const Ref<Table> table = std::move(dictionary->_table);
  dictionary->~Dictionary();
}

std::size_t Dictionary::size() const noexcept {
  return _table ? _table->size() : 0;
}

Dictionary::Iterator Dictionary::begin() const noexcept {
  return _table ? Iterator(_table->begin(), _table->end()) : Iterator();
}

Dictionary::Iterator Dictionary::end() const noexcept {
  return _table ? Iterator(_table->end(), _table->end()) : Iterator();
}

const Value* Dictionary::find(std::string_view key) const noexcept {
  const Entry* const entry = _table ? _table->find(key) : nullptr;
  return entry ? &entry->value : nullptr;
}

const Value& Dictionary::operator[](std::string_view key) const noexcept {
  static const Value absent;
  const Value* const value = find(key);
  return value ? *value : absent;
}

void Dictionary::set(const String& key, Value value) {
  checkMutable();
  if (!key) throw InternalConsistencyFailure("A value was stored under a null key");
  Entry* const entry = _table ? _table->find(key) : nullptr;
  if (entry && !_table->isShared()) {
    entry->value = std::move(value);
  } else if (entry) {
    _table = Table::withRoom(_table);
    _table->find(key)->value = std::move(value);
  } else {
    if (!_table || _table->isShared() || _table->isFull()) {
      _table = Table::withRoom(_table);
    }
    _table->append(key, std::move(value));
  }
}

void Dictionary::remove(std::string_view key) {
  checkMutable();
  if (!contains(key)) return;
  if (_table->isShared()) _table = Table::withRoom(_table);
  _table->remove(_table->find(key));
}

void Dictionary::checkMutable() const {
  if (_frozen) throw InternalConsistencyFailure("A frozen dictionary was changed");
}

DictionaryRef Dictionary::mutableCopy() const {
  return DictionaryRef(new Dictionary(_table, false));
}

DictionaryRef Dictionary::frozenCopy() const {
  return Value(DictionaryRef(const_cast<Dictionary*>(this))).frozenCopy().dictionary();
}

DictionaryRef Dictionary::frozenCopyAtDepth(int depth, std::size_t& left) const {
  if (_frozen) return DictionaryRef(const_cast<Dictionary*>(this));
  const bool isShareable =
      std::all_of(begin(), end(), [](const Entry& entry) { return entry.value.isImmutable(); });
  if (isShareable) return DictionaryRef(new Dictionary(_table, true));

  Ref<Table> table = Table::make(size());
  for (const Entry& entry : *this) {
    table->append(entry.key, entry.value.frozenCopyAtDepth(depth + 1, left));
  }
  return DictionaryRef(new Dictionary(std::move(table), true));
}

}  // namespace tallbook
