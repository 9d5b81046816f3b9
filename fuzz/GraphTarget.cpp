// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Files in the binary encoding whose objects refer to each other in every way: shared, in cycles,
// deep, to nothing, in huge numbers, with sizes and widths that are wrong.

#include <algorithm>

#include "fuzz/Drawn.h"
#include "fuzz/ObjectTable.h"
#include "fuzz/PropertyListChecks.h"
#include "fuzz/Target.h"
#include "platform/propertylist/BinaryFormat.h"

namespace tallbook::fuzz {

using namespace binaryformat;

namespace {

// Large files are few, since each takes as long as a hundred small ones.
constexpr std::size_t kLarge = 1'000'000;
constexpr std::size_t kSmall = 10'000;

class DrawnGraph {
 public:
  explicit DrawnGraph(Drawn& drawn) : _drawn(drawn), _most(drawn.oneIn(200) ? kLarge : kSmall) {
    _table.referenceSize = std::size_t{1} + drawn.below(4);
    if (drawn.oneIn(16)) _table.referenceSize = drawn.number<std::uint8_t>() % 8 + 1;
  }

  std::string file() {
    while (!_drawn.isUsedUp() && _size < _most) addObjects();
    _table.top = _drawn.oneIn(4) ? _drawn.number<std::uint16_t>()
                                 : std::max<std::size_t>(_table.objects.size(), 1) - 1;
    std::string file = _table.file(std::size_t{1} + _drawn.below(8));
    if (_drawn.oneIn(16)) damageTrailer(file);
    return file;
  }

 private:
  void addObjects() {
    const std::string object = anyObject();
    const int times = _drawn.oneIn(8) ? 1 + _drawn.number<std::uint16_t>() : 1;
    for (int time = 0; time < times && _size < _most; ++time) add(object);
    if (_drawn.oneIn(16)) addChain();
  }

  void add(std::string object) {
    _size += object.size() + 4;
    _table.objects.push_back(std::move(object));
  }

  /// Containers each of which holds the one before it, some of them several times.
  void addChain() {
    const int length = _drawn.number<std::uint16_t>() % 700;
    const std::size_t times = std::size_t{1} + _drawn.below(3);
    const bool isOfDictionaries = _drawn.oneIn(2);
    for (int link = 0; link < length && _size < _most; ++link) {
      const std::uint64_t before = _table.objects.empty() ? 0 : _table.objects.size() - 1;
      std::string object = marker(isOfDictionaries ? kDictionary : kArray, times);
      for (std::size_t key = 0; isOfDictionaries && key < times; ++key)
        appendReference(object, key);
      for (std::size_t time = 0; time < times; ++time) appendReference(object, before);
      add(std::move(object));
    }
  }

  std::string anyObject() {
    switch (_drawn.below(10)) {
      case 0:
        return text(_drawn.bytes(64));
      case 1:
        return marker(kInteger, _drawn.below(6)) + _drawn.bytes(16);
      case 2:
        return marker(kReal, 2 + _drawn.below(2)) + _drawn.bytes(8);
      case 3:
        return char(kDate) + _drawn.bytes(8);
      case 4:
        return body(kData, _drawn.bytes(64), 1);
      case 5:
        return marker(kUID, _drawn.below(16)) + _drawn.bytes(16);
      case 6:
        return std::string(1, char(_drawn.number<std::uint8_t>()));
      case 7:
      case 8:
        return container(kArray, 1);
      default:
        return container(kDictionary, 2);
    }
  }

  std::string text(const std::string& bytes) {
    const bool isASCII = std::ranges::all_of(bytes, [](char c) { return c >= 0; });
    if (isASCII && !_drawn.oneIn(4)) return body(kASCII, bytes, 1);
    std::string units;
    for (const char c : bytes) units += {_drawn.oneIn(8) ? char(0xd8) : '\0', c};
    return body(kUTF16, units, 2);
  }

  std::string container(Family family, std::size_t lists) {
    std::size_t size = std::size_t(_drawn.below(16));
    if (_drawn.oneIn(16)) size = _drawn.number<std::uint16_t>() * 4;
    size = std::min(size, _most / _table.referenceSize / lists);
    std::string references;
    const std::uint64_t again = anyReference();
    const bool isOfOne = size > 16 || _drawn.oneIn(8);
    for (std::size_t index = 0; index < size * lists; ++index) {
      // Many keys are a run of the objects, many values one.
      appendReference(references, !isOfOne           ? anyReference()
                                  : index < size / 2 ? again + index
                                                     : again);
    }
    return body(family, references, _table.referenceSize * lists);
  }

  /// Most of the time an object that is there already, so that there is no cycle.
  std::uint64_t anyReference() {
    const std::uint64_t any = _drawn.number<std::uint16_t>();
    return _table.objects.empty() || _drawn.oneIn(16) ? any : any % _table.objects.size();
  }

  void appendReference(std::string& to, std::uint64_t reference) const {
    appendNumber(to, reference, _table.referenceSize);
  }

  static std::string marker(Family family, std::size_t low) {
    return std::string(1, char(family << 4 | low));
  }

  /// An object whose size is right, unless it is drawn otherwise.
  std::string body(Family family, const std::string& content, std::size_t unit) {
    std::uint64_t size = content.size() / unit;
    if (_drawn.oneIn(32)) size = _drawn.number<std::uint64_t>();
    if (size < kSizeFollows && !_drawn.oneIn(16)) return marker(family, size) + content;
    const std::size_t width = size < 0x100 ? 0 : size < 0x10000 ? 1 : size >> 32 == 0 ? 2 : 3;
    std::string object = marker(family, kSizeFollows) + marker(kInteger, width);
    appendNumber(object, size, std::size_t{1} << width);
    return object + content;
  }

  void damageTrailer(std::string& file) {
    file[file.size() - kTrailerSize + std::size_t(_drawn.below(int(kTrailerSize)))] =
        char(_drawn.number<std::uint8_t>());
  }

  Drawn& _drawn;
  const std::size_t _most;  ///< bytes
  ObjectTable _table;
  std::size_t _size = 0;
};

}  // namespace

void tryInput(std::string_view input) {
  Drawn drawn(input);
  checkPropertyList(DrawnGraph(drawn).file());
}

}  // namespace tallbook::fuzz
