// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/BinaryWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/propertylist/KeyedHash.h"
#include "platform/propertylist/Limits.h"
#include "platform/propertylist/MalformedPropertyList.h"
#include "platform/propertylist/UnicodeText.h"

namespace tallbook {

using namespace binaryformat;

namespace {

/// The fewest bytes that hold the number, at least one.
std::size_t widthOf(std::uint64_t number) noexcept {
  return (static_cast<std::size_t>(std::bit_width(number | 1)) + 7) / 8;
}

bool isContainer(const Value& value) noexcept {
  return value.kind() == Value::Kind::Array || value.kind() == Value::Kind::Dictionary;
}

std::uint64_t addressOf(std::string_view bytes) noexcept {
  return reinterpret_cast<std::uintptr_t>(bytes.data());
}

std::uint64_t bitsOf(Date date) noexcept {
  return std::bit_cast<std::uint64_t>(date.secondsSince2001);
}

std::uint64_t hashOf(std::uint64_t bits) noexcept {
  return keyedHash({reinterpret_cast<const char*>(&bits), sizeof bits});
}

}  // namespace

void BinaryWriter::Extent::add(const Value& value, int depth) {
  const auto addBelow = [&](const Value& below) {
    if (isContainer(below)) add(below, depth + 1);
  };
  const auto enter = [&](std::size_t size) {
    if (depth > kMaximumNesting) throw MalformedPropertyList("containers are nested too deeply");
    ++containers;
    values += size;
    if (values > kMostValues) throw MalformedPropertyList("there are too many values");
  };
  if (value.kind() == Value::Kind::Array) {
    const ArrayRef array = value.array();
    enter(array->size());
    for (const Value& element : *array) addBelow(element);
  } else if (value.kind() == Value::Kind::Dictionary) {
    const DictionaryRef dictionary = value.dictionary();
    enter(dictionary->size());
    for (const Dictionary::Entry& entry : *dictionary) addBelow(entry.value);
  }
}

std::string BinaryWriter::encoded(const Value& root) {
  Extent extent;
  extent.add(root, 1);
  // How many objects there are is known only when all are written, so the narrowest references that
  // suffice are found by trying, from the width for what is most likely: half of the values
  // occurred before. An attempt with too narrow ones ends early.
  const std::size_t likely = std::max<std::size_t>({extent.containers, extent.values / 2, 1});
  std::size_t referenceSize = widthOf(likely - 1);
  for (;;) {
    try {
      BinaryWriter writer(extent, referenceSize);
      std::string bytes = writer.write(root);
      const std::size_t narrowest = widthOf(writer._offsets.size() - 1);
      if (narrowest == referenceSize) return bytes;
      referenceSize = narrowest;
    } catch (const TooManyObjects&) {
      ++referenceSize;
    }
  }
}

// Room for a file of mostly short values, half of which occurred before: then nothing has to grow,
// and little of the room stays empty.
BinaryWriter::BinaryWriter(const Extent& extent, std::size_t referenceSize)
    : _referenceSize(referenceSize),
      _mostObjects(std::min(std::uint64_t{1} << 8 * referenceSize, std::uint64_t{kNone})),
      _unique(std::min(extent.values, _mostObjects) / 2) {
  constexpr std::size_t kBytesPerValue = 16;
  const std::size_t most = std::min(extent.values, _mostObjects);
  _offsets.reserve(most);
  _out.reserve(most * kBytesPerValue + kSlack);
}

std::string BinaryWriter::write(const Value& root) {
  appendBytes(kMagic);
  const Number top = add(root);
  appendTableAndTrailer(top);
  _out.resize(_used);
  return std::move(_out);
}

BinaryWriter::Number BinaryWriter::add(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::Array:
      return addArray(value.array());
    case Value::Kind::Dictionary:
      return addDictionary(value.dictionary());
    case Value::Kind::String:
      return addText(*value.stringView());
    case Value::Kind::Data:
      return addData(value.data()->bytes());
    default:
      return addScalar(value);
  }
}

BinaryWriter::Number BinaryWriter::addArray(const ArrayRef& array) {
  const Number number = beginContainer(kArray, array.size(), array.size());
  std::size_t at = _used - array.size() * _referenceSize;
  for (std::size_t i = 0; i < array.size(); ++i) {
    if (_unique.isLarge() && i + 1 < array.size()) announceValuesOf(array[i + 1]);
    putReference(at, add(array[i]));
    at += _referenceSize;
  }
  return number;
}

BinaryWriter::Number BinaryWriter::addDictionary(const DictionaryRef& dictionary) {
  const std::size_t size = dictionary.size();
  const Number number = beginContainer(kDictionary, size, 2 * size);
  std::size_t keyAt = _used - 2 * size * _referenceSize;
  std::size_t valueAt = _used - size * _referenceSize;
  for (const Dictionary::Entry& entry : dictionary) {
    putReference(keyAt, addText(entry.key));
    putReference(valueAt, add(entry.value));
    keyAt += _referenceSize;
    valueAt += _referenceSize;
  }
  return number;
}

BinaryWriter::Number BinaryWriter::addText(std::string_view text) {
  return addBytes(Value::Kind::String, text, [&] { appendText(text); });
}

BinaryWriter::Number BinaryWriter::addData(std::string_view bytes) {
  return addBytes(Value::Kind::Data, bytes, [&] {
    appendMarker(kData, bytes.size());
    appendBytes(bytes);
  });
}

/// No two blobs of a tree have their bytes at one address, so the address tells them apart.
template <class Append>
BinaryWriter::Number BinaryWriter::addBytes(Value::Kind kind, std::string_view bytes,
                                            Append append) {
  if (bytes.size() <= kMostForgotten) {
    return addOnce(
        kind, addressOf(bytes), [&] { return keyedHash(bytes); }, append);
  }
  const auto [known, isNew] = _long.try_emplace({kind, bytes.data()}, kNone);
  if (isNew) {
    const Number number = beginObject();
    append();
    known->second = endUnique(number, keyedHash(bytes));
  }
  return known->second;
}

BinaryWriter::Number BinaryWriter::addScalar(const Value& value) {
  const auto addBits = [&](std::uint64_t bits, auto append) {
    return addOnce(
        value.kind(), bits, [&] { return hashOf(bits); }, append);
  };
  switch (value.kind()) {
    case Value::Kind::Boolean:
      return addBits(value.boolValue(), [&] { appendByte(value.boolValue() ? kTrue : kFalse); });
    case Value::Kind::Integer:
      // Above the signed range numbers have the bits of negative ones: those are not remembered.
      if (value.isBeyondSigned()) return addLargeInteger(value.unsignedValue());
      return addBits(value.unsignedValue(), [&] { appendInteger(value.unsignedValue()); });
    case Value::Kind::Real: {
      const auto bits = std::bit_cast<std::uint64_t>(value.realValue());
      return addBits(bits, [&] { appendNumber(kReal64, bits, 8); });
    }
    case Value::Kind::Date: {
      const std::uint64_t bits = bitsOf(*value.date());
      return addBits(bits, [&] { appendNumber(kDate, bits, 8); });
    }
    case Value::Kind::UID: {
      const std::uint64_t uid = value.uid()->value;
      const std::size_t size = widthOf(uid);
      return addBits(
          uid, [&] { appendNumber(static_cast<std::uint8_t>(kUID << 4 | (size - 1)), uid, size); });
    }
    default:
      return addBits(0, [&] { appendByte(kNull); });
  }
}

/// An integer of 16 bytes, the higher ones zero.
BinaryWriter::Number BinaryWriter::addLargeInteger(std::uint64_t number) {
  const Number object = beginObject();
  appendNumber(kInteger << 4 | 4, 0, 8);
  writeNumber(number, 8, room(8));
  _used += 8;
  return endUnique(object, hashOf(number));
}

/// The number of an object that is no container, which `append` writes unless it is one of the
/// last ones met. `hash` is asked for the hash of its content then.
template <class Hash, class Append>
BinaryWriter::Number BinaryWriter::addOnce(Value::Kind kind, std::uint64_t bits, Hash hash,
                                           Append append) {
  Known& known = _known[knownAt(bits)];
  const bool isAnnounced = known.is(kind, bits);
  if (isAnnounced && known.number != kNone) return known.number;
  if (!isAnnounced) known = {bits, hash(), kNone, kind};
  const Number number = beginObject();
  append();
  return known.number = endUnique(number, known.hash);
}

/// Fetches what the values of a dictionary need of the index, while the one before it is added.
void BinaryWriter::announceValuesOf(const Value& value) {
  const DictionaryRef dictionary = value.dictionary();
  if (!dictionary) return;
  for (const Dictionary::Entry& entry : *dictionary) announce(entry.value);
}

void BinaryWriter::announce(const Value& value) {
  const auto fetch = [this](Value::Kind kind, std::uint64_t bits, auto hash) {
    Known& known = _known[knownAt(bits)];
    if (known.is(kind, bits)) return;
    known = {bits, hash(), kNone, kind};
    _unique.prefetch(known.hash);
  };
  if (const auto text = value.stringView(); text && text->size() <= kMostForgotten) {
    fetch(value.kind(), addressOf(*text), [&] { return keyedHash(*text); });
  } else if (const auto date = value.date()) {
    fetch(value.kind(), bitsOf(*date), [&] { return hashOf(bitsOf(*date)); });
  }
}

BinaryWriter::Number BinaryWriter::beginObject() {
  _offsets.push_back(_used);
  return static_cast<Number>(_offsets.size() - 1);
}

BinaryWriter::Number BinaryWriter::beginContainer(Family family, std::size_t size,
                                                  std::size_t references) {
  const Number number = beginObject();
  if (number >= _mostObjects) throw TooManyObjects();
  appendMarker(family, size);
  room(references * _referenceSize);
  _used += references * _referenceSize;
  return number;
}

/// Ends the object `number`, the last one, which is no container: the number of the first object
/// of the same bytes, which stays alone. No object's bytes are the start of another's.
BinaryWriter::Number BinaryWriter::endUnique(Number number, std::uint64_t hash) {
  const std::size_t start = _offsets.back();
  const std::string_view object(_out.data() + start, _used - start);
  const std::uint32_t earlier = _unique.find(hash, [&](std::uint32_t other) {
    return std::memcmp(_out.data() + _offsets[other], object.data(), object.size()) == 0;
  });
  if (earlier == HashIndex::kNone) {
    if (number >= _mostObjects) throw TooManyObjects();
    _unique.insert(hash, number);
    return number;
  }
  _used = start;
  _offsets.pop_back();
  return earlier;
}

void BinaryWriter::appendMarker(Family family, std::size_t size) {
  if (size < kSizeFollows) {
    appendByte(static_cast<std::uint8_t>(family << 4 | size));
  } else {
    appendByte(static_cast<std::uint8_t>(family << 4 | kSizeFollows));
    appendInteger(size);
  }
}

/// Integers of 1, 2 and 4 bytes have no sign, those of 8 have.
void BinaryWriter::appendInteger(std::uint64_t number) {
  const std::size_t size = std::bit_ceil(widthOf(number));
  appendNumber(static_cast<std::uint8_t>(kInteger << 4 | std::countr_zero(size)), number, size);
}

void BinaryWriter::appendNumber(std::uint8_t marker, std::uint64_t number, std::size_t size) {
  char* const to = room(1 + size);
  *to = static_cast<char>(marker);
  writeNumber(number, size, to + 1);
  _used += 1 + size;
}

void BinaryWriter::appendByte(std::uint8_t byte) {
  *room(1) = static_cast<char>(byte);
  ++_used;
}

void BinaryWriter::appendBytes(std::string_view bytes) {
  if (bytes.empty()) return;
  std::memcpy(room(bytes.size()), bytes.data(), bytes.size());
  _used += bytes.size();
}

void BinaryWriter::appendText(std::string_view text) {
  if (isASCII(text)) {
    appendMarker(kASCII, text.size());
    appendBytes(text);
    return;
  }
  const std::optional<std::size_t> length = utf16Length(text);
  if (!length) throw MalformedPropertyList("a string is not UTF-8");
  appendMarker(kUTF16, *length);
  writeUTF16(text, room(2 * *length));
  _used += 2 * *length;
}

/// Byte by byte: what lies behind the reference is written already.
void BinaryWriter::putReference(std::size_t at, Number number) noexcept {
  char* to = _out.data() + at;
  for (std::size_t i = _referenceSize; i > 0; --i, number >>= 8) {
    to[i - 1] = static_cast<char>(number);
  }
}

// A string's growth writes zeros, so it goes in steps that are overwritten while they are still in
// the caches.
void BinaryWriter::grow(std::size_t size) {
  constexpr std::size_t kStep = 16384;
  _out.resize(_used + size + kSlack + kStep);
}

void BinaryWriter::appendTableAndTrailer(Number root) {
  const std::size_t table = _used;
  const std::size_t offsetSize = widthOf(_offsets.back());
  char* to = room(_offsets.size() * offsetSize + kTrailerSize);
  for (const std::uint64_t offset : _offsets) to = writeNumber(offset, offsetSize, to);
  std::memset(to, 0, kOffsetSizeAt);
  to[kOffsetSizeAt] = static_cast<char>(offsetSize);
  to[kReferenceSizeAt] = static_cast<char>(_referenceSize);
  writeNumber(_offsets.size(), 8, to + kObjectCountAt);
  writeNumber(root, 8, to + kTopObjectAt);
  writeNumber(table, 8, to + kOffsetTableAt);
  _used = static_cast<std::size_t>(to - _out.data()) + kTrailerSize;
}

}  // namespace tallbook
