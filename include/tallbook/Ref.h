// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>
#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace tallbook {

/// Base of the objects that `Ref` shares: carries their reference count. Counting is thread-safe,
/// the objects themselves are as safe as their own class says.
class Counted {
 public:
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 protected:
  /// Tag of objects in static storage, which are never destroyed however often they are released.
  struct Forever {};

  constexpr Counted() = default;
  /// An object in static storage.
  constexpr explicit Counted(Forever) noexcept : _count(1 << 30) {}
  ~Counted() = default;

  /// Whether only one reference is left: its holder may then change the object in place.
  bool isReferencedOnce() const noexcept { return __atomic_load_n(&_count, __ATOMIC_ACQUIRE) == 1; }

 private:
  template <class T>
  friend class Ref;
  friend class Value;

  // Atomic from the moment that the process has a second thread. Before it, an atomic increment
  // would be most of what handing a value around costs. Where the C library does not tell, there
  // may always be a second thread.
  static bool isSingleThreaded() noexcept {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
  }
  void retain() const noexcept {
    if (isSingleThreaded()) {
      ++_count;
    } else {
      __atomic_fetch_add(&_count, 1, __ATOMIC_RELAXED);
    }
  }
  /// True when this was the last reference.
  [[nodiscard]] bool release() const noexcept {
    if (isSingleThreaded()) return --_count == 0;
    return __atomic_sub_fetch(&_count, 1, __ATOMIC_ACQ_REL) == 0;
  }

  mutable int _count = 0;
};

/// Objects that are read as a range.
template <class T>
concept Container = requires(const T& object) {
  object.begin();
  object.end();
  object.size();
};

/// Objects that have a part for every `key`.
template <class T, class Key>
concept Indexed = requires(const T& object, const Key& key) {
  object[key];
};

/// A shared reference to a counted object, one pointer wide; null when it refers to nothing.
/// The object is destroyed, through its class's `destroy`, with its last reference.
///
/// A reference to a container is read like the container: a null one is an empty range, and no key
/// is found in it. What is read from a reference must not outlive it, so a temporary one can be
/// neither dereferenced nor asked for iterators; `for (const Value& v : account->dataclasses())`
/// is safe, since the loop keeps its range.
template <class T>
class [[nodiscard]] Ref {
 public:
  /// Refers to nothing.
  /// @{
  Ref() noexcept = default;
  Ref(std::nullptr_t) noexcept {}
  /// @}
  /// One reference more to the object, or to nothing for null.
  explicit Ref(T* object) noexcept : _object(object) {
    if (_object) _object->retain();
  }
  /// Copies refer to the same object; a moved-from reference refers to nothing.
  /// @{
  Ref(const Ref& other) noexcept : Ref(other._object) {}
  Ref(Ref&& other) noexcept : _object(std::exchange(other._object, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(_object, other._object);
    return *this;
  }
  /// @}
  ~Ref() {
    if (_object && _object->release()) T::destroy(_object);
  }

  /// The object, which lives as long as some reference to it; null for a null reference, which may
  /// not be dereferenced.
  /// @{
  T* get() const noexcept { return _object; }
  T& operator*() const& noexcept { return *_object; }
  T& operator*() const&& = delete;  // give the reference a name that lives as long as its use
  T* operator->() const noexcept { return _object; }
  /// @}
  /// Whether it refers to an object, however empty that is.
  explicit operator bool() const noexcept { return _object != nullptr; }

  // Of a container

  /// Size and iterators of the container; of a null reference, those of an empty range.
  /// @{
  template <Container C = T>
  std::size_t size() const noexcept {
    return _object ? _object->size() : 0;
  }
  template <Container C = T>
  bool empty() const noexcept {
    return size() == 0;
  }
  template <Container C = T>
  auto begin() const& noexcept {
    return _object ? constObject().begin() : decltype(constObject().begin())();
  }
  template <Container C = T>
  auto end() const& noexcept {
    return _object ? constObject().end() : decltype(constObject().end())();
  }
  template <Container C = T>
  void begin() const&& = delete;
  template <Container C = T>
  void end() const&& = delete;
  /// @}

  /// What the container has at that index or under that key: a reference into it, valid as long as
  /// the container says, and a copy where this reference is a temporary. Of a null reference, an
  /// empty value.
  /// @{
  template <class Key>
  requires Indexed<T, Key>
  const auto& operator[](const Key& key) const& noexcept {
    if (_object) return constObject()[key];
    static const std::remove_cvref_t<decltype(constObject()[key])> absent;
    return absent;
  }
  template <class Key>
  requires Indexed<T, Key>
  auto operator[](const Key& key) const&& noexcept { return (*this)[key]; }
  /// @}

  /// Identity: the same object, not equal content.
  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a._object == b._object; }
  /// Whether it refers to nothing.
  friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a._object == nullptr; }

 private:
  friend class String;
  friend class Value;

  /// Tag for the reference to an object in static storage, which it does not count.
  struct Uncounted {};
  constexpr Ref(T& object, Uncounted) noexcept : _object(&object) {}
  const T& constObject() const noexcept { return *_object; }

  T* _object = nullptr;
};

}  // namespace tallbook
