// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/Export.h"
#include "tallbook/Ref.h"
#include "tallbook/String.h"

namespace tallbook {

class Array;
class BinaryReader;
class Dictionary;
/// Null where there is no array or dictionary to answer with.
/// @{
using ArrayRef = Ref<Array>;
using DictionaryRef = Ref<Dictionary>;
/// @}

/// A point in time.
struct Date {
  /// Fractions included, since 2001-01-01T00:00:00Z; negative before.
  double secondsSince2001 = 0;
};

/// A unique-identifier token of keyed archives; carried, never interpreted.
struct UID {
  std::uint64_t value = 0;  ///< the token's number
};

/// Immutable bytes, shared by its copies.
class Data {
 public:
  /// A copy of the bytes.
  explicit Data(std::string_view bytes) : _blob(Blob::copyOf(bytes)) {}
  /// The blob itself, which is not null.
  explicit Data(Ref<Blob> blob) noexcept : _blob(std::move(blob)) {}

  /// Valid as long as some copy of the data.
  std::string_view bytes() const noexcept { return _blob->view(); }
  /// What the copies share; null only for data that was moved from.
  const Ref<Blob>& blob() const noexcept { return _blob; }

 private:
  Ref<Blob> _blob;
};

/// Integral types that stand for a character, and so for no number.
template <class T>
concept Character = std::same_as<T, char> || std::same_as<T, wchar_t> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t>;
/// Integral types that make an integer value.
template <class T>
concept SignedNumber = std::signed_integral<T> && !Character<T>;
/// Integral types that make an integer value, which may be beyond the signed range.
template <class T>
concept UnsignedNumber = std::unsigned_integral<T> && !Character<T> && !std::same_as<T, bool>;

/// A property-list value, two words wide: null, boolean, integer (all signed and unsigned 64-bit
/// numbers), real, string, date, data, UID, array or dictionary. Copies of an array or dictionary
/// value refer to one object; all other kinds are immutable.
///
/// A stored value may have the wrong kind, so every typed read answers "absent" (nullopt, null,
/// false, 0) for the other kinds and never fails. A value is thread-bound; the frozen containers,
/// strings and data that values share may be read by several threads.
class TALLBOOK_EXPORT Value {
 public:
  /// What a value is. All integers are of one kind, whatever their size.
  enum class Kind : std::uint8_t {
    Null,
    Boolean,
    Integer,
    Real,
    Date,
    UID,
    String,
    Data,
    Array,
    Dictionary
  };

  /// The null value.
  /// @{
  Value() noexcept = default;
  Value(std::nullptr_t) noexcept {}
  /// @}
  /// The value of the argument's kind, which of numbers their type tells.
  /// @{
  template <std::same_as<bool> Boolean>
  Value(Boolean boolean) noexcept : _bits(boolean), _kind(Kind::Boolean) {}
  template <SignedNumber Integer>
  Value(Integer integer) noexcept
      : _bits(static_cast<std::uint64_t>(static_cast<std::int64_t>(integer))),
        _kind(Kind::Integer) {}
  template <UnsignedNumber Integer>
  Value(Integer integer) noexcept
      : _bits(integer),
        _kind(Kind::Integer),
        _beyondSigned((static_cast<std::uint64_t>(integer) >> 63) != 0) {}
  template <std::floating_point Real>
  Value(Real real) noexcept
      : _bits(std::bit_cast<std::uint64_t>(static_cast<double>(real))), _kind(Kind::Real) {}
  /// Neither a number nor a text by itself: say which is meant.
  template <Character C>
  Value(C) = delete;
  Value(Date date) noexcept
      : _bits(std::bit_cast<std::uint64_t>(date.secondsSince2001)), _kind(Kind::Date) {}
  Value(UID uid) noexcept : _bits(uid.value), _kind(Kind::UID) {}
  /// @}
  /// The value that shares the argument's text, bytes or object, or has a copy of a text of another
  /// type. The null value for a null string, array or dictionary.
  /// @{
  Value(const String& string) noexcept : Value(string.blob().get(), Kind::String) {}
  Value(String&& string) noexcept : Value(std::move(string._blob), Kind::String) {}
  Value(std::string_view string) : Value(String(string)) {}
  Value(const std::string& string) : Value(String(string)) {}
  Value(const char* string) : Value(String(string)) {}
  Value(const Data& data) noexcept : Value(data.blob().get(), Kind::Data) {}
  Value(const ArrayRef& array) noexcept;
  Value(ArrayRef&& array) noexcept;
  Value(const DictionaryRef& dictionary) noexcept;
  Value(DictionaryRef&& dictionary) noexcept;
  /// @}

  /// Copies of an array or dictionary value refer to one object; a moved-from value is null.
  /// @{
  Value(const Value& other) noexcept
      : _bits(other._bits), _kind(other._kind), _beyondSigned(other._beyondSigned) {
    if (isShared()) counted()->retain();
  }
  Value(Value&& other) noexcept
      : _bits(other._bits),
        _kind(std::exchange(other._kind, Kind::Null)),
        _beyondSigned(other._beyondSigned) {}
  Value& operator=(Value other) noexcept {
    std::swap(_bits, other._bits);
    std::swap(_kind, other._kind);
    std::swap(_beyondSigned, other._beyondSigned);
    return *this;
  }
  /// @}
  ~Value() {
    if (isShared() && counted()->release()) destroyShared();
  }

  /// Which of the reads below has an answer.
  /// @{
  Kind kind() const noexcept { return _kind; }
  bool isNull() const noexcept { return _kind == Kind::Null; }
  /// @}
  /// Whether `boolValue` and `integerValue` have something to read: a boolean, an integer, a real.
  bool isNumber() const noexcept {
    return _kind == Kind::Boolean || _kind == Kind::Integer || _kind == Kind::Real;
  }
  /// True for an integer above the signed 64-bit range; read it with `unsignedValue`.
  bool isBeyondSigned() const noexcept { return _beyondSigned && _kind == Kind::Integer; }

  /// A boolean itself; a number other than 0 is true; every other kind is false.
  bool boolValue() const noexcept;
  /// An integer itself (modulo 2^64 where beyond the signed range), a boolean as 0 or 1, a real
  /// truncated (0 where it is no number, the nearest end where it is out of range); else 0.
  std::int64_t integerValue() const noexcept;
  /// `integerValue` as an unsigned number.
  std::uint64_t unsignedValue() const noexcept {
    return static_cast<std::uint64_t>(integerValue());
  }
  /// A real itself, an integer converted; else 0.
  double realValue() const noexcept;
  /// The string; null for every other kind.
  String string() const noexcept;
  /// The string's text without sharing it; nullopt for every other kind. Valid as long as the
  /// value, so that a temporary one has none.
  std::optional<std::string_view> stringView() const& noexcept;
  std::optional<std::string_view> stringView() const&& = delete;
  /// What the value holds, data shared; nullopt for every other kind.
  /// @{
  std::optional<Date> date() const noexcept;
  std::optional<UID> uid() const noexcept;
  std::optional<Data> data() const noexcept;
  /// @}
  /// The object itself, shared; null for every other kind.
  /// @{
  ArrayRef array() const noexcept;
  DictionaryRef dictionary() const noexcept;
  /// @}

  /// A deep, immutable copy: frozen containers and all other kinds are their own copy.
  /// Throws InternalConsistencyFailure where containers nest past `kMaximumNesting` and where the
  /// copy would unfold past 10 million values.
  [[nodiscard]] Value frozenCopy() const;

  /// The value on one line, for logs: strings, data and dates in double quotes, `<` and `>`, and
  /// ISO 8601; `[a, b]`; `{Key: value, ...}` in stored order. A string, a key or data takes at most
  /// 64 KiB, the whole 1 MiB and what closes it: "..." and how much that is stand for what is left
  /// out, "..." alone for what is nested past `kMaximumNesting`.
  [[nodiscard]] std::string description() const;

  /// Equality by content, at once for the same object. Values of different kinds are never equal;
  /// reals and dates are equal when their bits are, so that a value always equals itself.
  friend TALLBOOK_EXPORT bool operator==(const Value& a, const Value& b) noexcept;

 private:
  friend class Array;
  friend class Dictionary;
  friend class Equality;

  Value(const Counted* object, Kind kind) noexcept
      : _bits(reinterpret_cast<std::uintptr_t>(object)), _kind(object ? kind : Kind::Null) {
    if (object) object->retain();
  }
  /// Takes the reference over.
  template <class T>
  Value(Ref<T>&& object, Kind kind) noexcept
      : _bits(reinterpret_cast<std::uintptr_t>(static_cast<const Counted*>(object._object))),
        _kind(std::exchange(object._object, nullptr) ? kind : Kind::Null) {}
  bool isShared() const noexcept { return _kind >= Kind::String; }
  const Counted* counted() const noexcept { return reinterpret_cast<const Counted*>(_bits); }
  template <class T>
  T* object() const noexcept {
    return static_cast<T*>(const_cast<Counted*>(counted()));
  }
  void destroyShared() noexcept;
  /// Whether the value can never change: it is no container, or a frozen one.
  TALLBOOK_INTERNAL bool isImmutable() const noexcept;
  TALLBOOK_INTERNAL Value frozenCopyAtDepth(int depth, std::size_t& left) const;

  std::uint64_t _bits = 0;
  Kind _kind = Kind::Null;
  bool _beyondSigned = false;
};

/// "string", "integer", ...
TALLBOOK_EXPORT std::string_view nameOfKind(Value::Kind kind) noexcept;
/// "is of the kind string, not array", of a string where `wanted` is "array".
TALLBOOK_EXPORT std::string textOfWrongKind(const Value& value, std::string_view wanted);

/// The deepest nesting of containers that is read, written, copied or compared.
inline constexpr int kMaximumNesting = 512;

/// An ordered list of values with identity: all holders of one array see its changes.
///
/// An array is mutable or frozen. A frozen one holds only frozen containers and never changes;
/// changing it throws InternalConsistencyFailure. Not safe for use by two threads at a time unless
/// frozen.
class TALLBOOK_EXPORT Array final : public Counted {
 public:
  /// A new, mutable array.
  static ArrayRef make(std::vector<Value> elements = {});
  /// A new, frozen array. Throws InternalConsistencyFailure where a container among `elements` is
  /// not frozen.
  static ArrayRef makeFrozen(std::vector<Value> elements);
  /// For the last reference alone.
  static void destroy(Array* array) noexcept;

  /// Whether it never changes.
  bool isFrozen() const noexcept { return _frozen; }
  /// The elements in order. The index is below `size`; references and iterators are valid until the
  /// array changes.
  /// @{
  std::size_t size() const noexcept { return _elements.size(); }
  bool empty() const noexcept { return _elements.empty(); }
  const Value& operator[](std::size_t index) const noexcept { return _elements[index]; }
  auto begin() const noexcept { return _elements.begin(); }
  auto end() const noexcept { return _elements.end(); }
  /// @}
  /// Whether an element equals `value`, or is that string.
  /// @{
  bool contains(const Value& value) const noexcept;
  bool contains(std::string_view string) const noexcept;
  /// @}

  /// Adds the value as the last element.
  void append(Value value);
  /// Puts another value in an element's place, or takes the element out. Throw
  /// InternalConsistencyFailure for an index that is not below `size`.
  /// @{
  void replace(std::size_t index, Value value);
  void remove(std::size_t index);
  /// @}
  /// Removes every element that equals `value`.
  void removeAllEqual(const Value& value);

  /// A new mutable array with the same elements; nested containers are shared.
  ArrayRef mutableCopy() const;
  /// A deep, immutable copy; a frozen array is its own. Throws as `Value::frozenCopy`.
  ArrayRef frozenCopy() const;

 private:
  friend class BinaryReader;
  friend class Value;

  explicit Array(std::vector<Value> elements, bool frozen) noexcept
      : _elements(std::move(elements)), _frozen(frozen) {}
  ~Array() = default;
  TALLBOOK_INTERNAL void checkMutable() const;
  TALLBOOK_INTERNAL void checkMutableAt(std::size_t index) const;
  TALLBOOK_INTERNAL ArrayRef frozenCopyAtDepth(int depth, std::size_t& left) const;

  std::vector<Value> _elements;
  bool _frozen;
};

/// Values under string keys, in insertion order, with identity: all holders of one dictionary see
/// its changes. Look-up takes constant time however many keys there are.
///
/// Mutable or frozen, and thread-bound or not, like an array. A mutable copy of any dictionary, and
/// a frozen copy of one whose containers are frozen, share its storage until one of them changes:
/// both cost nothing.
class TALLBOOK_EXPORT Dictionary final : public Counted {
 public:
  /// What iteration goes over.
  struct Entry {
    String key;   ///< null in the gap that a removed entry leaves; iteration passes over gaps
    Value value;  ///< which may be the null value
  };
  class Iterator;

  /// A new, mutable dictionary. Of two entries with one key the later value counts; a null key is
  /// refused as by `set`.
  /// @{
  static DictionaryRef make();
  static DictionaryRef make(std::initializer_list<std::pair<String, Value>> entries);
  /// @}
  /// A new, frozen dictionary. Of two entries with one key the later value stays, at the place of
  /// the first. Throws InternalConsistencyFailure for a null key, and where a container among the
  /// values is not frozen.
  static DictionaryRef makeFrozen(std::vector<Entry> entries);
  /// For the last reference alone.
  static void destroy(Dictionary* dictionary) noexcept;

  /// Whether it never changes.
  bool isFrozen() const noexcept { return _frozen; }
  /// The entries in insertion order. Iterators are valid until the dictionary changes.
  /// @{
  std::size_t size() const noexcept;
  bool empty() const noexcept { return size() == 0; }
  Iterator begin() const noexcept;
  Iterator end() const noexcept;
  /// @}

  /// The value stored under `key`, which may be the null value; nullptr when there is no such key.
  /// Valid until the dictionary changes.
  const Value* find(std::string_view key) const noexcept;
  /// Whether anything is stored under `key`, the null value included.
  bool contains(std::string_view key) const noexcept { return find(key) != nullptr; }
  /// The value stored under `key`, or the null value. The reference is valid until the dictionary
  /// changes.
  const Value& operator[](std::string_view key) const noexcept;

  /// Stores `value` under `key`, the null value included; a new key comes last. Throws
  /// InternalConsistencyFailure for a null key.
  void set(const String& key, Value value);
  /// Removes the key; nothing where there is none.
  void remove(std::string_view key);

  /// A new mutable dictionary with the same entries; nested containers are shared.
  DictionaryRef mutableCopy() const;
  /// A deep, immutable copy; a frozen dictionary is its own. Throws as `Value::frozenCopy`.
  DictionaryRef frozenCopy() const;
  /// Whether both still share one storage: then neither changed since one was copied from the
  /// other, and they are equal.
  bool sharesStorageWith(const Dictionary& other) const noexcept { return _table == other._table; }

 private:
  friend class BinaryReader;
  friend class Value;
  class Table;

  TALLBOOK_INTERNAL Dictionary(Ref<Table> table, bool frozen) noexcept;
  TALLBOOK_INTERNAL ~Dictionary();
  TALLBOOK_INTERNAL void checkMutable() const;
  TALLBOOK_INTERNAL DictionaryRef frozenCopyAtDepth(int depth, std::size_t& left) const;

  Ref<Table> _table;
  bool _frozen;
  bool _isBeforeTable = false;  ///< in one allocation with its table; such a one is frozen
};

/// Forward iteration over the entries of a dictionary, in insertion order. Any change of the
/// dictionary ends its validity.
class Dictionary::Iterator {
 public:
  /// For the standard library's algorithms.
  /// @{
  using value_type = Entry;
  using difference_type = std::ptrdiff_t;
  /// @}

  Iterator() = default;
  /// For the dictionary itself: stands at the first entry from `at` on, or at the end.
  Iterator(const Entry* at, const Entry* end) noexcept : _at(at), _end(end) { skipGaps(); }
  /// The entry it stands at; not to be asked for at the end.
  /// @{
  const Entry& operator*() const noexcept { return *_at; }
  const Entry* operator->() const noexcept { return _at; }
  /// @}
  /// Goes on to the next entry, over gaps.
  /// @{
  Iterator& operator++() noexcept {
    ++_at;
    skipGaps();
    return *this;
  }
  Iterator operator++(int) noexcept {
    Iterator before = *this;
    ++*this;
    return before;
  }
  /// @}
  /// Whether both stand at one place of one dictionary.
  friend bool operator==(const Iterator& a, const Iterator& b) noexcept { return a._at == b._at; }

 private:
  void skipGaps() noexcept {
    while (_at != _end && !_at->key) ++_at;
  }

  const Entry* _at = nullptr;
  const Entry* _end = nullptr;
};

/// Equality by content: the same keys with equal values, in any order. Null equals only null.
TALLBOOK_EXPORT bool equalContent(const DictionaryRef& a, const DictionaryRef& b) noexcept;

}  // namespace tallbook
