#include "platform/propertylist/BinaryWriter.h"

#include <bit>

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

}  // namespace

std::string BinaryWriter::encoded(const Value& root) {
  // How many distinct objects there are is known only when all are written. An attempt with too
  // narrow references ends early, so that the narrowest that suffice are found by trying.
  for (std::size_t referenceSize = 1;; ++referenceSize) {
    try {
      return BinaryWriter(referenceSize).write(root);
    } catch (const TooManyObjects&) {
    }
  }
}

std::string BinaryWriter::write(const Value& root) {
  _out = kMagic;
  ++_values;
  const Number top = add(root, 1);
  appendTableAndTrailer(top);
  return std::move(_out);
}

BinaryWriter::Number BinaryWriter::add(const Value& value, int depth) {
  switch (value.kind()) {
    case Value::Kind::Array:
      return addArray(*value.array(), depth);
    case Value::Kind::Dictionary:
      return addDictionary(*value.dictionary(), depth);
    case Value::Kind::String:
      return addText(*value.stringView());
    case Value::Kind::Data:
      return addData(value.data()->bytes());
    default:
      break;
  }
  const Number number = beginObject();
  switch (value.kind()) {
    case Value::Kind::Boolean:
      _out += static_cast<char>(value.boolValue() ? kTrue : kFalse);
      break;
    case Value::Kind::Integer:
      appendInteger(value);
      break;
    case Value::Kind::Real:
      appendNumber(kReal64, std::bit_cast<std::uint64_t>(value.realValue()), 8);
      break;
    case Value::Kind::Date:
      appendNumber(kDate, std::bit_cast<std::uint64_t>(value.date()->secondsSince2001), 8);
      break;
    case Value::Kind::UID: {
      const std::size_t size = widthOf(value.uid()->value);
      appendNumber(static_cast<std::uint8_t>(kUID << 4 | (size - 1)), value.uid()->value, size);
      break;
    }
    default:
      _out += static_cast<char>(kNull);
      break;
  }
  return endUnique(number);
}

BinaryWriter::Number BinaryWriter::addArray(const Array& array, int depth) {
  const Number number = beginContainer(kArray, array.size(), array.size(), depth);
  std::size_t at = _out.size() - array.size() * _referenceSize;
  for (const Value& element : array) {
    putReference(at, add(element, depth + 1));
    at += _referenceSize;
  }
  return number;
}

BinaryWriter::Number BinaryWriter::addDictionary(const Dictionary& dictionary, int depth) {
  const std::size_t size = dictionary.size();
  const Number number = beginContainer(kDictionary, size, 2 * size, depth);
  std::size_t at = _out.size() - 2 * size * _referenceSize;
  for (const Dictionary::Entry& entry : dictionary) {
    putReference(at, addText(entry.key));
    at += _referenceSize;
  }
  for (const Dictionary::Entry& entry : dictionary) {
    putReference(at, add(entry.value, depth + 1));
    at += _referenceSize;
  }
  return number;
}

BinaryWriter::Number BinaryWriter::addText(std::string_view text) {
  Known& known = lately(text);
  if (known.bytes == text.data()) return known.number;
  const Number number = beginObject();
  appendText(text);
  known = {text.data(), endUnique(number)};
  return known.number;
}

BinaryWriter::Number BinaryWriter::addData(std::string_view bytes) {
  Known& known = lately(bytes);
  if (known.bytes == bytes.data()) return known.number;
  const Number number = beginObject();
  appendMarker(kData, bytes.size());
  _out += bytes;
  known = {bytes.data(), endUnique(number)};
  return known.number;
}

/// Where the number of the string or data at this address is remembered. No two blobs of a tree
/// have their bytes at one address.
BinaryWriter::Known& BinaryWriter::lately(std::string_view bytes) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(bytes.data());
  return _known[address / alignof(std::max_align_t) % _known.size()];
}

BinaryWriter::Number BinaryWriter::beginObject() {
  const auto number = static_cast<Number>(_offsets.size());
  if (_referenceSize < sizeof number && number >> (8 * _referenceSize) != 0) {
    throw TooManyObjects();
  }
  _offsets.push_back(_out.size());
  return number;
}

BinaryWriter::Number BinaryWriter::beginContainer(Family family, std::size_t size,
                                                  std::size_t references, int depth) {
  if (depth > kMaximumNesting) throw MalformedPropertyList("containers are nested too deeply");
  _values += size;
  if (_values > kMostValues) throw MalformedPropertyList("there are too many values");
  const Number number = beginObject();
  appendMarker(family, size);
  _out.append(references * _referenceSize, '\0');
  return number;
}

/// Ends the object `number`, the last one, which is no container: the number of the first object
/// of the same bytes, which stays alone. No object's bytes are the start of another's.
BinaryWriter::Number BinaryWriter::endUnique(Number number) {
  const std::string_view object = std::string_view(_out).substr(_offsets.back());
  const std::uint64_t hash = keyedHash(object);
  const std::uint32_t earlier = _unique.find(hash, [&](std::uint32_t other) {
    return _out.compare(_offsets[other], object.size(), object) == 0;
  });
  if (earlier == HashIndex::kNone) {
    _unique.insert(hash, number);
    return number;
  }
  _out.resize(_offsets.back());
  _offsets.pop_back();
  return earlier;
}

void BinaryWriter::appendMarker(Family family, std::size_t size) {
  if (size < kSizeFollows) {
    _out += static_cast<char>(family << 4 | size);
  } else {
    _out += static_cast<char>(family << 4 | kSizeFollows);
    appendInteger(size);
  }
}

/// Integers of 1, 2 and 4 bytes have no sign, those of 8 and 16 have.
void BinaryWriter::appendInteger(const Value& integer) {
  const std::uint64_t number = integer.unsignedValue();
  if (integer.isBeyondSigned()) {
    appendNumber(kInteger << 4 | 4, 0, 8);
    char low[8];
    _out.append(low, writeNumber(number, 8, low));
    return;
  }
  const std::size_t size = std::bit_ceil(widthOf(number));
  appendNumber(static_cast<std::uint8_t>(kInteger << 4 | std::countr_zero(size)), number, size);
}

void BinaryWriter::appendNumber(std::uint8_t marker, std::uint64_t number, std::size_t size) {
  char bytes[9];
  bytes[0] = static_cast<char>(marker);
  _out.append(bytes, writeNumber(number, size, bytes + 1));
}

void BinaryWriter::appendText(std::string_view text) {
  if (isASCII(text)) {
    appendMarker(kASCII, text.size());
    _out += text;
    return;
  }
  const std::optional<std::size_t> length = utf16Length(text);
  if (!length) throw MalformedPropertyList("a string is not UTF-8");
  appendMarker(kUTF16, *length);
  const std::size_t at = _out.size();
  _out.resize(at + 2 * *length);
  writeUTF16(text, _out.data() + at);
}

void BinaryWriter::putReference(std::size_t at, Number number) {
  writeNumber(number, _referenceSize, _out.data() + at);
}

void BinaryWriter::appendTableAndTrailer(Number root) {
  const std::size_t table = _out.size();
  const std::size_t offsetSize = widthOf(_offsets.back());
  _out.resize(table + _offsets.size() * offsetSize + kTrailerSize);
  char* to = _out.data() + table;
  for (const std::uint64_t offset : _offsets) to = writeNumber(offset, offsetSize, to);
  to[kOffsetSizeAt] = static_cast<char>(offsetSize);
  to[kReferenceSizeAt] = static_cast<char>(_referenceSize);
  writeNumber(_offsets.size(), 8, to + kObjectCountAt);
  writeNumber(root, 8, to + kTopObjectAt);
  writeNumber(table, 8, to + kOffsetTableAt);
}

}  // namespace tallbook
