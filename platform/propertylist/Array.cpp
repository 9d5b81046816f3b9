// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <functional>

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/Value.h"

namespace tallbook {

ArrayRef Array::make(std::vector<Value> elements) {
  return ArrayRef(new Array(std::move(elements), false));
}

ArrayRef Array::makeFrozen(std::vector<Value> elements) {
  if (!std::all_of(elements.begin(), elements.end(), std::mem_fn(&Value::isImmutable))) {
    throw InternalConsistencyFailure("A frozen array was made of containers that can change");
  }
  return ArrayRef(new Array(std::move(elements), true));
}

void Array::destroy(Array* array) noexcept {
  delete array;
}

bool Array::contains(const Value& value) const noexcept {
  return std::find(begin(), end(), value) != end();
}

bool Array::contains(std::string_view string) const noexcept {
  return std::any_of(begin(), end(),
                     [string](const Value& element) { return element.stringView() == string; });
}

void Array::append(Value value) {
  checkMutable();
  _elements.push_back(std::move(value));
}

void Array::replace(std::size_t index, Value value) {
  checkMutableAt(index);
  _elements[index] = std::move(value);
}

void Array::remove(std::size_t index) {
  checkMutableAt(index);
  _elements.erase(_elements.begin() + static_cast<std::ptrdiff_t>(index));
}

void Array::removeAllEqual(const Value& value) {
  checkMutable();
  const Value wanted = value;  // may be one of the elements that are about to move
  std::erase(_elements, wanted);
}

ArrayRef Array::mutableCopy() const {
  return make(_elements);
}

ArrayRef Array::frozenCopy() const {
  return Value(ArrayRef(const_cast<Array*>(this))).frozenCopy().array();
}

ArrayRef Array::frozenCopyAtDepth(int depth, std::size_t& left) const {
  if (_frozen) return ArrayRef(const_cast<Array*>(this));
  std::vector<Value> elements;
  elements.reserve(size());
  for (const Value& element : _elements) {
    elements.push_back(element.frozenCopyAtDepth(depth + 1, left));
  }
  return ArrayRef(new Array(std::move(elements), true));
}

void Array::checkMutable() const {
  if (_frozen) throw InternalConsistencyFailure("A frozen array was changed");
}

void Array::checkMutableAt(std::size_t index) const {
  checkMutable();
  if (index >= size()) throw InternalConsistencyFailure("An array was changed beyond its end");
}

}  // namespace tallbook
