// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <compare>
#include <concepts>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

#include "tallbook/Export.h"
#include "tallbook/Ref.h"

namespace tallbook {

/// Immutable bytes behind `String` and `Data`: a header followed by the bytes in one allocation.
class TALLBOOK_EXPORT Blob final : public Counted {
 public:
  /// A blob with a copy of the bytes.
  static Ref<Blob> copyOf(std::string_view bytes);
  /// A blob whose `size` bytes `fill(char*)` writes.
  template <class Fill>
  static Ref<Blob> make(std::size_t size, Fill fill) {
    Ref<Blob> blob = uninitialised(size);
    fill(reinterpret_cast<char*>(blob.get() + 1));
    return blob;
  }
  /// For the last reference alone.
  static void destroy(Blob* blob) noexcept;

  /// The bytes, which the blob holds as long as it lives.
  std::string_view view() const noexcept {
    return {reinterpret_cast<const char*>(this + 1), _size};
  }

 private:
  template <std::size_t size>
  friend class ConstantText;

  explicit Blob(std::size_t size) noexcept : _size(size) {}
  /// In static storage.
  constexpr Blob(std::size_t size, Forever forever) noexcept : Counted(forever), _size(size) {}
  ~Blob() = default;
  static Ref<Blob> uninitialised(std::size_t size);

  std::size_t _size;
};

template <std::size_t size>
class ConstantText;

/// A text of another kind: what a `std::string_view` can be made of.
template <class T>
concept ForeignText =
    !std::same_as<T, std::nullptr_t> && std::convertible_to<const T&, std::string_view>;

/// A shared, immutable text in UTF-8, or null: the answer "there is none". Copying shares the text.
/// NUL characters are ordinary. Null equals only null and comes before every text; a null string's
/// view is empty.
///
/// A view is valid as long as some copy of the string. None can be had of a temporary string, whose
/// text may go with it: keep the string, or take a copy of the text with `str`. One text may be
/// read by several threads; a string itself is thread-bound.
class TALLBOOK_EXPORT String {
 public:
  /// Null.
  /// @{
  String() noexcept = default;
  String(std::nullptr_t) noexcept {}
  /// @}
  /// A copy of the text, which is taken to be UTF-8. A pointer is to a text that ends with NUL; it
  /// is not null.
  /// @{
  String(std::string_view text) : _blob(Blob::copyOf(text)) {}
  String(const std::string& text) : String(std::string_view(text)) {}
  String(const char* text) : String(std::string_view(text)) {}
  /// @}
  /// The blob's bytes as a text, shared; null for null.
  explicit String(Ref<Blob> blob) noexcept : _blob(std::move(blob)) {}
  /// For the library's constants, whose text the compiler makes.
  template <std::size_t size>
  explicit constexpr String(ConstantText<size>& text) noexcept
      : _blob(text.blob(), Ref<Blob>::Uncounted()) {}

  /// Whether there is a text, an empty one included.
  explicit operator bool() const noexcept { return static_cast<bool>(_blob); }
  /// Whether the text is empty or null.
  bool empty() const noexcept { return !_blob || _blob->view().empty(); }
  /// The text itself, valid as long as some copy of the string.
  /// @{
  std::string_view view() const& noexcept { return _blob ? _blob->view() : std::string_view(); }
  std::string_view view() const&& = delete;
  operator std::string_view() const& noexcept { return view(); }
  operator std::string_view() const&& = delete;
  /// @}
  /// A copy of the text; empty for null.
  std::string str() const { return std::string(view()); }
  /// What the copies of the string share; null for null.
  const Ref<Blob>& blob() const noexcept { return _blob; }

  /// The same text, byte for byte; null equals only null.
  friend bool operator==(const String& a, const String& b) noexcept {
    return a._blob == b._blob || (a._blob && b._blob && a.view() == b.view());
  }
  /// Whether it is null.
  friend bool operator==(const String& a, std::nullptr_t) noexcept { return !a._blob; }
  /// The same text; null equals none.
  friend bool operator==(const String& a, const ForeignText auto& b) noexcept {
    return a._blob && a.view() == std::string_view(b);
  }
  /// By bytes, which is by code points; null comes first.
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    if (!a._blob || !b._blob) return static_cast<bool>(a) <=> static_cast<bool>(b);
    return a.view().compare(b.view()) <=> 0;
  }
  /// The same for a text of another kind.
  friend std::strong_ordering operator<=>(const String& a, const ForeignText auto& b) noexcept {
    if (!a._blob) return std::strong_ordering::less;
    return a.view().compare(std::string_view(b)) <=> 0;
  }

 private:
  friend class Value;

  Ref<Blob> _blob;
};

/// Writes the text; nothing for null.
TALLBOOK_EXPORT std::ostream& operator<<(std::ostream& out, const String& string);

/// Hash for tables keyed by `String` that are also searched by `std::string_view`.
struct StringHash {
  using is_transparent = void;  ///< lets tables be searched by what is no `String`
  /// Equal for a string and its view.
  std::size_t operator()(std::string_view text) const noexcept {
    return std::hash<std::string_view>()(text);
  }
};

/// Equality to go with `StringHash`.
struct StringEqual {
  using is_transparent = void;  ///< lets tables be searched by what is no `String`
  /// By bytes. Null counts as the empty text here.
  bool operator()(std::string_view a, std::string_view b) const noexcept { return a == b; }
};

}  // namespace tallbook

// Not in the reference, which has nothing else of std.
/// @cond
template <>
struct std::hash<tallbook::String> : tallbook::StringHash {};
/// @endcond
