// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/BinaryReader.h"

#include <algorithm>
#include <cmath>

#include "platform/propertylist/BinaryFormat.h"
#include "platform/propertylist/Limits.h"
#include "platform/propertylist/MalformedPropertyList.h"
#include "platform/propertylist/UnicodeText.h"

namespace tallbook {

using namespace binaryformat;

namespace {

std::uint8_t markerAt(const char* at) noexcept {
  return static_cast<std::uint8_t>(*at);
}

bool isText(const char* at) noexcept {
  const int family = markerAt(at) >> 4;
  return family == kASCII || family == kUTF16;
}

/// The number in `bytes`, where 64 bits can hold it: higher bytes must be zero.
std::uint64_t readWideNumber(std::string_view bytes) {
  const std::size_t low = std::min<std::size_t>(bytes.size(), 8);
  const std::string_view high = bytes.substr(0, bytes.size() - low);
  if (std::any_of(high.begin(), high.end(), [](char byte) { return byte != 0; })) {
    throw MalformedPropertyList("a number is too large");
  }
  return readNumber(bytes.data() + high.size(), low);
}

/// Integers of 1, 2 and 4 bytes have no sign, those of 8 and 16 have.
Value readInteger(std::string_view bytes) {
  if (bytes.size() < 8) return readWideNumber(bytes);
  if (bytes.size() == 8) return static_cast<std::int64_t>(readNumber(bytes.data(), 8));
  const std::uint64_t high = readNumber(bytes.data(), 8);
  const auto low = static_cast<std::int64_t>(readNumber(bytes.data() + 8, 8));
  if (high == UINT64_MAX && low < 0) return low;
  return readWideNumber(bytes);
}

double readDouble(const char* at) noexcept {
  return std::bit_cast<double>(readNumber(at, 8));
}

/// A 32-bit real as the 64-bit one of the same value. What is no number keeps its bits, which a
/// conversion would change.
double readFloat(const char* at) noexcept {
  const auto bits = static_cast<std::uint32_t>(readNumber(at, 4));
  const auto real = std::bit_cast<float>(bits);
  if (!std::isnan(real)) return real;
  const std::uint64_t sign = bits >> 31;
  const std::uint64_t fraction = bits & 0x7fffff;
  return std::bit_cast<double>(sign << 63 | 0x7ff0000000000000 | fraction << 29);
}

}  // namespace

bool BinaryReader::recognises(std::string_view bytes) noexcept {
  return bytes.starts_with(kMagic);
}

BinaryReader::BinaryReader(std::string_view bytes)
    : _bytes(bytes), _mostValues(std::clamp(bytes.size(), kMostValuesBeyondBytes, kMostValues)) {
  if (bytes.size() <= kMagic.size() + kTrailerSize) throw MalformedPropertyList("cut off");
  const std::size_t tableEnd = bytes.size() - kTrailerSize;
  const char* const trailer = bytes.data() + tableEnd;
  _offsetSize = markerAt(trailer + kOffsetSizeAt);
  _referenceSize = markerAt(trailer + kReferenceSizeAt);
  _topObject = readNumber(trailer + kTopObjectAt, 8);
  const std::uint64_t count = readNumber(trailer + kObjectCountAt, 8);
  const std::uint64_t table = readNumber(trailer + kOffsetTableAt, 8);

  const auto isSize = [](std::size_t size) { return size >= 1 && size <= 8; };
  if (!isSize(_offsetSize) || !isSize(_referenceSize) || table <= kMagic.size() ||
      table >= tableEnd || count != (tableEnd - table) / _offsetSize ||
      (tableEnd - table) % _offsetSize != 0) {
    throw MalformedPropertyList("the trailer does not fit the file, which may be cut off");
  }
  _end = bytes.data() + table;
  _unclaimed = table - kMagic.size();
  // Room is made for every object, so there may be no more than can lie at places of their own.
  if (count > _unclaimed || (_offsetSize < 8 && count >> 8 * _offsetSize != 0)) {
    throw MalformedPropertyList("there are more objects than places for them");
  }
  checkOffsets();
  _slots.resize(count);
}

void BinaryReader::checkOffsets() const {
  const auto objectsEnd = static_cast<std::uint64_t>(_end - _bytes.data());
  const char* const tableEnd = _bytes.data() + _bytes.size() - kTrailerSize;
  for (const char* at = _end; at != tableEnd; at += _offsetSize) {
    const std::uint64_t offset = readNumber(at, _offsetSize);
    if (offset < kMagic.size() || offset >= objectsEnd) {
      throw MalformedPropertyList("an object lies outside the file");
    }
  }
}

Value BinaryReader::read() {
  Value root = readObject(_topObject);
  readOpenContainers();
  for (Dictionary::Table* table : _unsettled) table->settle();
  return root;
}

void BinaryReader::readOpenContainers() {
  while (!_frames.empty()) {
    Frame& frame = _frames.back();
    if (frame.left == 0) {
      const Frame closed = frame;
      _frames.pop_back();
      close(closed);
      continue;
    }
    --frame.left;
    const std::uint64_t reference = referenceAt(frame.next);
    frame.next += _referenceSize;
    if (frame.array) {
      std::vector<Value>& elements = frame.array->_elements;
      elements.push_back(readObject(reference));
    } else {
      Dictionary::Table& table = *frame.table;
      String key = readNextKey(frame);
      table.appendMade(std::move(key), [&] { return readObject(reference); });
    }
  }
}

String BinaryReader::readNextKey(Frame& frame) {
  if (frame.sameKeys) return (frame.sameKeys++)->key;
  const char* const at = frame.nextKey;
  frame.nextKey += _referenceSize;
  return readKey(referenceAt(at));
}

void BinaryReader::close(const Frame& frame) {
  frame.slot->isOpen = false;
  if (!_frames.empty()) add(*_frames.back().slot, *frame.slot);
  if (!frame.table || frame.sameKeys) return;
  if (frame.table->size() <= Dictionary::Table::kMostWithoutIndex &&
      frame.table->isSettledAlready()) {
    _keyLists[_nextKeyList++ % _keyLists.size()] = {frame.keyReferences, frame.table};
  } else {
    _unsettled.push_back(frame.table);
  }
}

Value BinaryReader::readObject(std::uint64_t reference) {
  Slot& slot = slotOf(reference);
  // Most objects are strings.
  if (slot.kind == Value::Kind::String) return sharedString(slot);
  if (slot.object) return readAgain(slot);
  const char* const at = objectAt(slot);
  return isText(at) ? readString(slot, at) : readNew(slot, at);
}

Value BinaryReader::readNew(Slot& slot, const char* at) {
  const std::uint8_t marker = markerAt(at);
  const std::size_t low = marker & 0xf;
  const auto body = [&](std::size_t size) {
    if (size > static_cast<std::size_t>(_end - at) - 1) {
      throw MalformedPropertyList("an object runs past the last one");
    }
    return std::string_view(at + 1, size);
  };
  switch (marker >> 4) {
    case kSimple:
      if (marker == kNull) return nullptr;
      if (marker == kFalse || marker == kTrue) return marker == kTrue;
      break;
    case kInteger:
      if (low <= 4) return readInteger(body(std::size_t{1} << low));
      break;
    case kReal:
      if (marker == kReal64) return readDouble(body(8).data());
      if (marker == kReal32) return readFloat(body(4).data());
      break;
    case kDates:
      if (marker == kDate) return Date{readDouble(body(8).data())};
      break;
    case kUID:
      return UID{readWideNumber(body(low + 1))};
    case kData:
      return readData(slot, at);
    case kArray:
      return openArray(slot, at);
    case kDictionary:
      return openDictionary(slot, at);
    default:
      break;
  }
  throw MalformedPropertyList("an object is of an unknown kind");
}

Value BinaryReader::readAgain(const Slot& slot) {
  Counted* const object = const_cast<Counted*>(slot.object);
  if (slot.kind == Value::Kind::Data) return Data(Ref<Blob>(static_cast<Blob*>(object)));
  if (slot.isOpen) throw MalformedPropertyList("a container contains itself");
  if (_frames.size() + slot.nesting > kMaximumNesting) {
    throw MalformedPropertyList("containers are nested too deeply");
  }
  add(*_frames.back().slot, slot);
  if (slot.kind == Value::Kind::Array) return ArrayRef(static_cast<Array*>(object));
  return DictionaryRef(static_cast<Dictionary*>(object));
}

String BinaryReader::sharedString(const Slot& slot) {
  return String(Ref<Blob>(static_cast<Blob*>(const_cast<Counted*>(slot.object))));
}

String BinaryReader::readKey(std::uint64_t reference) {
  Slot& slot = slotOf(reference);
  if (slot.kind == Value::Kind::String) return sharedString(slot);
  if (!slot.object) {
    const char* const at = objectAt(slot);
    if (isText(at)) return readString(slot, at);
  }
  throw MalformedPropertyList("a key is no string");
}

String BinaryReader::readString(Slot& slot, const char* at) {
  String string;
  if (markerAt(at) >> 4 == kASCII) {
    const std::string_view text = claimBody(at, 1);
    if (isASCII(text)) string = String(Blob::copyOf(text));
  } else {
    string = stringFromUTF16(claimBody(at, 2));
  }
  if (!string) throw MalformedPropertyList("a string is no Unicode text");
  slot.object = string.blob().get();
  slot.kind = Value::Kind::String;
  return string;
}

Value BinaryReader::readData(Slot& slot, const char* at) {
  Ref<Blob> blob = Blob::copyOf(claimBody(at, 1));
  slot.object = blob.get();
  slot.kind = Value::Kind::Data;
  return Data(std::move(blob));
}

Value BinaryReader::openArray(Slot& slot, const char* at) {
  const std::string_view references = claimBody(at, _referenceSize);
  const std::size_t size = references.size() / _referenceSize;
  count(size);
  ArrayRef array(new Array({}, true));
  array->_elements.reserve(size);
  slot.object = array.get();
  slot.kind = Value::Kind::Array;
  // Most arrays hold no containers; those need not be opened.
  const char* next = references.data();
  std::size_t left = size;
  for (; left > 0 && !isContainer(referenceAt(next)); --left, next += _referenceSize) {
    array->_elements.push_back(readObject(referenceAt(next)));
  }
  open({&slot, array.get(), nullptr, next, nullptr, left, {}, nullptr}, size);
  return array;
}

bool BinaryReader::isContainer(std::uint64_t reference) {
  const Slot& slot = slotOf(reference);
  if (slot.object) return slot.kind >= Value::Kind::Array;
  const int family = markerAt(objectAt(slot)) >> 4;
  return family == kArray || family == kDictionary;
}

Value BinaryReader::openDictionary(Slot& slot, const char* at) {
  const std::string_view references = claimBody(at, 2 * _referenceSize);
  const std::string_view keys = references.substr(0, references.size() / 2);
  const std::size_t size = keys.size() / _referenceSize;
  count(size);
  DictionaryRef dictionary = Dictionary::Table::makeDictionary(size);
  Dictionary::Table* const entries = dictionary->_table.get();
  slot.object = dictionary.get();
  slot.kind = Value::Kind::Dictionary;
  open({&slot, nullptr, entries, keys.data() + keys.size(), keys.data(), size, keys,
        entriesWithKeys(keys)},
       size);
  return dictionary;
}

/// Counts the values of a container that is about to be made.
void BinaryReader::count(std::size_t values) {
  _values += values;
  if (_values > _mostValues) throw MalformedPropertyList("there are too many values");
}

void BinaryReader::open(const Frame& frame, std::size_t size) {
  if (_frames.size() == kMaximumNesting) {
    throw MalformedPropertyList("containers are nested too deeply");
  }
  frame.slot->unfolded = static_cast<std::uint32_t>(1 + size);
  frame.slot->nesting = 1;
  if (frame.left > 0) {
    frame.slot->isOpen = true;
    _frames.push_back(frame);
  } else if (!_frames.empty()) {
    add(*_frames.back().slot, *frame.slot);
  }
}

/// Counts a container among its parent's values, of which it was one already.
void BinaryReader::add(Slot& parent, const Slot& child) const {
  parent.nesting = std::max(parent.nesting, static_cast<std::uint16_t>(child.nesting + 1));
  parent.unfolded += child.unfolded - 1;
  if (parent.unfolded > _mostValues) throw MalformedPropertyList("there are too many values");
}

const Dictionary::Entry* BinaryReader::entriesWithKeys(
    std::string_view keyReferences) const noexcept {
  const auto known = std::find_if(_keyLists.begin(), _keyLists.end(), [&](const KeyList& list) {
    return list.table && list.references == keyReferences;
  });
  return known == _keyLists.end() ? nullptr : known->table->begin();
}

BinaryReader::Slot& BinaryReader::slotOf(std::uint64_t reference) {
  if (reference >= _slots.size()) {
    throw MalformedPropertyList("an object is referred to that does not exist");
  }
  return _slots[reference];
}

const char* BinaryReader::objectAt(const Slot& slot) const {
  const auto number = static_cast<std::size_t>(&slot - _slots.data());
  return _bytes.data() + readNumber(_end + number * _offsetSize, _offsetSize);
}

std::uint64_t BinaryReader::referenceAt(const char* at) const noexcept {
  return readNumber(at, _referenceSize);
}

/// The bytes that follow the marker and the size of the object at `at`: `size` units of `unit`
/// bytes each.
std::string_view BinaryReader::claimBody(const char* at, std::size_t unit) {
  const char* body = at + 1;
  std::uint64_t size = markerAt(at) & 0xf;
  if (size == kSizeFollows) {
    const std::uint8_t marker = body < _end ? markerAt(body) : 0;
    const std::size_t width = std::size_t{1} << (marker & 0xf);
    if (marker >> 4 != kInteger || width > 8 || width >= static_cast<std::size_t>(_end - body)) {
      throw MalformedPropertyList("an object has no size");
    }
    size = readNumber(body + 1, width);
    body += 1 + width;
  }
  if (size > static_cast<std::size_t>(_end - body) / unit) {
    throw MalformedPropertyList("an object runs past the last one");
  }
  body += size * unit;
  const auto claimed = static_cast<std::size_t>(body - at);
  if (claimed > _unclaimed) throw MalformedPropertyList("objects overlap");
  _unclaimed -= claimed;
  return {body - size * unit, static_cast<std::size_t>(size * unit)};
}

}  // namespace tallbook
