// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Value.h"

#include <cmath>
#include <limits>

#include "tallbook/InternalConsistencyFailure.h"

#include "platform/propertylist/Limits.h"

namespace tallbook {
namespace {

/// A dead container that waits to be destroyed.
struct Doomed {
  const Counted* object;
  Value::Kind kind;
  Doomed* next;
};

thread_local int teardownDepth = 0;
thread_local Doomed* doomed = nullptr;

void destroyContainer(const Counted* object, Value::Kind kind) noexcept {
  auto* counted = const_cast<Counted*>(object);
  if (kind == Value::Kind::Array) {
    Array::destroy(static_cast<Array*>(counted));
  } else {
    Dictionary::destroy(static_cast<Dictionary*>(counted));
  }
}

/// Destroys a container that a value held. Its own values come back here, so that a tree of any
/// depth could use up the stack: what lies deeper than a legal tree waits for the outermost call.
void tearDown(const Counted* object, Value::Kind kind) noexcept {
  if (teardownDepth == kMaximumNesting) {
    doomed = new Doomed{object, kind, doomed};
    return;
  }
  ++teardownDepth;
  destroyContainer(object, kind);
  if (teardownDepth == 1) {
    while (doomed) {
      const Doomed next = *doomed;
      delete std::exchange(doomed, next.next);
      destroyContainer(next.object, next.kind);
    }
  }
  --teardownDepth;
}

/// A real as the nearest integer towards 0.
std::int64_t truncated(double real) noexcept {
  constexpr double kEnd = 0x1p63;
  if (std::isnan(real)) return 0;
  if (real >= kEnd) return std::numeric_limits<std::int64_t>::max();
  if (real < -kEnd) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(real);
}

}  // namespace

Value::Value(const ArrayRef& array) noexcept : Value(array.get(), Kind::Array) {}
Value::Value(ArrayRef&& array) noexcept : Value(std::move(array), Kind::Array) {}
Value::Value(const DictionaryRef& dictionary) noexcept
    : Value(dictionary.get(), Kind::Dictionary) {}
Value::Value(DictionaryRef&& dictionary) noexcept
    : Value(std::move(dictionary), Kind::Dictionary) {}

bool Value::boolValue() const noexcept {
  switch (_kind) {
    case Kind::Boolean:
    case Kind::Integer:
      return _bits != 0;
    case Kind::Real:
      return std::bit_cast<double>(_bits) != 0;
    default:
      return false;
  }
}

std::int64_t Value::integerValue() const noexcept {
  switch (_kind) {
    case Kind::Boolean:
    case Kind::Integer:
      return static_cast<std::int64_t>(_bits);
    case Kind::Real:
      return truncated(std::bit_cast<double>(_bits));
    default:
      return 0;
  }
}

double Value::realValue() const noexcept {
  switch (_kind) {
    case Kind::Integer:
      return _beyondSigned ? static_cast<double>(_bits)
                           : static_cast<double>(static_cast<std::int64_t>(_bits));
    case Kind::Real:
      return std::bit_cast<double>(_bits);
    default:
      return 0;
  }
}

String Value::string() const noexcept {
  return _kind == Kind::String ? String(Ref<Blob>(object<Blob>())) : String();
}

std::optional<std::string_view> Value::stringView() const& noexcept {
  if (_kind != Kind::String) return std::nullopt;
  return object<Blob>()->view();
}

std::optional<Date> Value::date() const noexcept {
  if (_kind != Kind::Date) return std::nullopt;
  return Date{std::bit_cast<double>(_bits)};
}

std::optional<UID> Value::uid() const noexcept {
  if (_kind != Kind::UID) return std::nullopt;
  return UID{_bits};
}

std::optional<Data> Value::data() const noexcept {
  if (_kind != Kind::Data) return std::nullopt;
  return Data(Ref<Blob>(object<Blob>()));
}

ArrayRef Value::array() const noexcept {
  return _kind == Kind::Array ? ArrayRef(object<Array>()) : nullptr;
}

DictionaryRef Value::dictionary() const noexcept {
  return _kind == Kind::Dictionary ? DictionaryRef(object<Dictionary>()) : nullptr;
}

bool Value::isImmutable() const noexcept {
  switch (_kind) {
    case Kind::Array:
      return object<Array>()->isFrozen();
    case Kind::Dictionary:
      return object<Dictionary>()->isFrozen();
    default:
      return true;
  }
}

Value Value::frozenCopy() const {
  std::size_t left = kMostValues;
  return frozenCopyAtDepth(1, left);
}

Value Value::frozenCopyAtDepth(int depth, std::size_t& left) const {
  if (isImmutable()) return *this;
  if (depth > kMaximumNesting) {
    throw InternalConsistencyFailure("A property list is nested too deeply to be copied");
  }
  if (left-- == 0) {
    throw InternalConsistencyFailure("A property list is too large to be copied");
  }
  if (_kind == Kind::Array) return object<Array>()->frozenCopyAtDepth(depth, left);
  return object<Dictionary>()->frozenCopyAtDepth(depth, left);
}

void Value::destroyShared() noexcept {
  if (_kind == Kind::String || _kind == Kind::Data) {
    Blob::destroy(object<Blob>());
  } else {
    tearDown(counted(), _kind);
  }
}

}  // namespace tallbook
