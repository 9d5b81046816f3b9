#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

#include "platform/propertylist/BinaryFormat.h"
#include "platform/propertylist/HashIndex.h"

namespace tallbook {

/// Writes one tree in the binary encoding: each container where it occurs, every other object once,
/// told apart by its encoded bytes. Reals keep their 64 bits, the width being part of a number's
/// type to other readers.
class BinaryWriter {
 public:
  /// The encoded tree. Throws MalformedPropertyList.
  static std::string encoded(const Value& root);

 private:
  /// The file's number of an object.
  using Number = std::uint32_t;
  /// Thrown when there are more objects than references of the chosen width can tell apart.
  struct TooManyObjects {};

  explicit BinaryWriter(std::size_t referenceSize) : _referenceSize(referenceSize) {}
  std::string write(const Value& root);

  Number add(const Value& value, int depth);
  Number addArray(const Array& array, int depth);
  Number addDictionary(const Dictionary& dictionary, int depth);
  Number addText(std::string_view text);
  Number addData(std::string_view bytes);

  Number beginObject();
  Number beginContainer(binaryformat::Family family, std::size_t size, std::size_t references,
                        int depth);
  Number endUnique(Number number);
  void appendMarker(binaryformat::Family family, std::size_t size);
  void appendInteger(const Value& integer);
  void appendNumber(std::uint8_t marker, std::uint64_t number, std::size_t size);
  void appendText(std::string_view text);
  void putReference(std::size_t at, Number number);
  void appendTableAndTrailer(Number root);

  /// What a string's or data's bytes lie at, and its number.
  struct Known {
    const char* bytes = nullptr;
    Number number = 0;
  };
  Known& lately(std::string_view bytes) noexcept;

  std::size_t _referenceSize;
  std::string _out;
  std::vector<std::uint64_t> _offsets;
  HashIndex _unique;
  std::size_t _values = 0;
  // Keys and shared strings come again and again: the last objects met at some addresses.
  std::array<Known, 256> _known;
};

}  // namespace tallbook
