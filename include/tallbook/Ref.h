#pragma once

#include <cstddef>
#include <ext/atomicity.h>
#include <utility>

namespace tallbook {

/// Base of the objects that `Ref` shares: carries their reference count. Counting is thread-safe,
/// the objects themselves are as safe as their own class says.
class Counted {
 public:
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 protected:
  Counted() = default;
  ~Counted() = default;

  /// Whether only one reference is left: its holder may then change the object in place.
  bool isReferencedOnce() const noexcept { return __atomic_load_n(&_count, __ATOMIC_ACQUIRE) == 1; }

 private:
  template <class T>
  friend class Ref;
  friend class Value;

  // As std::shared_ptr counts: atomically from the moment that the process has a second thread.
  // Before it, an atomic increment would be most of what handing a value around costs.
  void retain() const noexcept { __gnu_cxx::__atomic_add_dispatch(&_count, 1); }
  /// True when this was the last reference.
  [[nodiscard]] bool release() const noexcept {
    return __gnu_cxx::__exchange_and_add_dispatch(&_count, -1) == 1;
  }

  mutable _Atomic_word _count = 0;
};

/// A shared reference to a counted object, one pointer wide; null when it refers to nothing.
/// The object is destroyed, through its class's `destroy`, with its last reference.
template <class T>
class Ref {
 public:
  Ref() noexcept = default;
  Ref(std::nullptr_t) noexcept {}
  explicit Ref(T* object) noexcept : _object(object) {
    if (_object) _object->retain();
  }
  Ref(const Ref& other) noexcept : Ref(other._object) {}
  Ref(Ref&& other) noexcept : _object(std::exchange(other._object, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(_object, other._object);
    return *this;
  }
  ~Ref() {
    if (_object && _object->release()) T::destroy(_object);
  }

  T* get() const noexcept { return _object; }
  T& operator*() const noexcept { return *_object; }
  T* operator->() const noexcept { return _object; }
  explicit operator bool() const noexcept { return _object != nullptr; }

  /// Identity: the same object, not equal content.
  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a._object == b._object; }
  friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a._object == nullptr; }

 private:
  friend class Value;

  T* _object = nullptr;
};

}  // namespace tallbook
