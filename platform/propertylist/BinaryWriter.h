// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/Value.h"

#include "platform/propertylist/BinaryFormat.h"
#include "platform/propertylist/HashIndex.h"

namespace tallbook {

/// Writes one tree in the binary encoding: each container where it occurs, every other object once,
/// told apart by its encoded bytes. Reals take 64 bits, which hold every one that was read.
class BinaryWriter {
 public:
  /// The encoded tree. Throws MalformedPropertyList.
  static std::string encoded(const Value& root);

 private:
  /// The file's number of an object.
  using Number = std::uint32_t;
  static constexpr Number kNone = HashIndex::kNone;
  /// Thrown when there are more objects than references of the chosen width can tell apart.
  struct TooManyObjects {};
  /// A value that was met: its own bits or where its bytes lie, the hash of its content, its number
  /// once it is written, and its kind.
  struct Known {
    std::uint64_t bits = 0;
    std::uint64_t hash = 0;
    Number number = kNone;
    Value::Kind kind = Value::Kind::Array;  // none that is remembered

    bool is(Value::Kind otherKind, std::uint64_t otherBits) const noexcept {
      return bits == otherBits && kind == otherKind;
    }
  };
  /// How many values a tree has, shared ones counted wherever they occur, keys not.
  struct Extent {
    std::size_t values = 1;
    std::size_t containers = 0;

    /// Counts what lies below a container. Throws MalformedPropertyList for a tree that is too
    /// large or too deep to be written.
    void add(const Value& value, int depth);
  };

  BinaryWriter(const Extent& extent, std::size_t referenceSize);
  std::string write(const Value& root);

  Number add(const Value& value);
  Number addArray(const ArrayRef& array);
  Number addDictionary(const DictionaryRef& dictionary);
  Number addText(std::string_view text);
  Number addData(std::string_view bytes);
  Number addScalar(const Value& value);
  Number addLargeInteger(std::uint64_t number);
  template <class Hash, class Append>
  Number addOnce(Value::Kind kind, std::uint64_t bits, Hash hash, Append append);
  template <class Append>
  Number addBytes(Value::Kind kind, std::string_view bytes, Append append);
  void announceValuesOf(const Value& value);
  void announce(const Value& value);

  Number beginObject();
  Number beginContainer(binaryformat::Family family, std::size_t size, std::size_t references);
  Number endUnique(Number number, std::uint64_t hash);
  void appendMarker(binaryformat::Family family, std::size_t size);
  void appendInteger(std::uint64_t number);
  void appendNumber(std::uint8_t marker, std::uint64_t number, std::size_t size);
  void appendByte(std::uint8_t byte);
  void appendBytes(std::string_view bytes);
  void appendText(std::string_view text);
  void putReference(std::size_t at, Number number) noexcept;
  void appendTableAndTrailer(Number root);
  /// Where the next `size` bytes go, with room for a few more behind them.
  char* room(std::size_t size) {
    if (_used + size + kSlack > _out.size()) grow(size);
    return _out.data() + _used;
  }
  void grow(std::size_t size);
  /// Where a value of those bits is remembered. Addresses end in zeros, small numbers begin with
  /// them: a product's high bits depend on both.
  static std::size_t knownAt(std::uint64_t bits) noexcept {
    constexpr std::uint64_t kGoldenRatio = 0x9e3779b97f4a7c15;
    return bits * kGoldenRatio >> 56;
  }

  /// Bytes of more than this are looked at once only.
  static constexpr std::size_t kMostForgotten = 1024;
  /// What every write may run past its end (`writeNumber`).
  static constexpr std::size_t kSlack = 8;

  std::size_t _referenceSize;
  std::uint64_t _mostObjects;
  // The file as far as it is written, and room behind it.
  std::string _out;
  std::size_t _used = 0;
  std::vector<std::uint64_t> _offsets;
  HashIndex _unique;
  // Keys, shared strings and small numbers come again and again: the last values met.
  std::array<Known, 256> _known;
  // All long texts and data: to hash one again whenever it occurs could take for ever.
  std::map<std::pair<Value::Kind, const char*>, Number> _long;
};

}  // namespace tallbook
