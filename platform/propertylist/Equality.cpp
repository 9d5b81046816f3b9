// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Value.h"

namespace tallbook {

/// Compares trees. Containers past the deepest legal nesting, in cycles above all, equal only
/// themselves, and that ends every comparison.
class Equality {
 public:
  static bool equal(const Value& a, const Value& b, int depth) noexcept {
    if (a._kind != b._kind) return false;
    switch (a._kind) {
      case Value::Kind::Null:
        return true;
      case Value::Kind::Boolean:
      case Value::Kind::Integer:
      case Value::Kind::Real:
      case Value::Kind::Date:
      case Value::Kind::UID:
        return a._bits == b._bits && a._beyondSigned == b._beyondSigned;
      case Value::Kind::String:
      case Value::Kind::Data:
        return a._bits == b._bits || a.object<Blob>()->view() == b.object<Blob>()->view();
      case Value::Kind::Array:
        return equal(*a.object<Array>(), *b.object<Array>(), depth);
      case Value::Kind::Dictionary:
        return equal(*a.object<Dictionary>(), *b.object<Dictionary>(), depth);
    }
    return false;
  }

  static bool equal(const Array& a, const Array& b, int depth) noexcept {
    if (&a == &b) return true;
    if (a.size() != b.size() || depth > kMaximumNesting) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (!equal(a[i], b[i], depth + 1)) return false;
    }
    return true;
  }

  static bool equal(const Dictionary& a, const Dictionary& b, int depth) noexcept {
    if (&a == &b || a.sharesStorageWith(b)) return true;
    if (a.size() != b.size() || depth > kMaximumNesting) return false;
    // Two states of one record mostly have their keys in one order: look there first.
    Dictionary::Iterator beside = b.begin();
    for (const auto& [key, value] : a) {
      const Value* const other = key == beside->key ? &beside->value : b.find(key);
      if (!other || !equal(value, *other, depth + 1)) return false;
      ++beside;
    }
    return true;
  }
};

bool operator==(const Value& a, const Value& b) noexcept {
  return Equality::equal(a, b, 1);
}

bool equalContent(const DictionaryRef& a, const DictionaryRef& b) noexcept {
  if (!a || !b) return a == b;
  return Equality::equal(*a, *b, 1);
}

}  // namespace tallbook
