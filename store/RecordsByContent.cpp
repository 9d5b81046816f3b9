// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/RecordsByContent.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/propertylist/KeyedHash.h"

namespace tallbook {
namespace {

/// Hashes that are equal for equal content, whatever the order of the keys, and that nobody can
/// make equal for other content.
class ContentHashing {
 public:
  std::uint64_t hashOf(const Value& value, int depth = 1) noexcept {
    const std::uint64_t content = hashOfContent(value, depth);
    char bytes[sizeof content + 1];
    std::memcpy(bytes, &content, sizeof content);
    bytes[sizeof content] = static_cast<char>(value.kind());
    return keyedHash({bytes, sizeof bytes});
  }

 private:
  std::uint64_t hashOfContent(const Value& value, int depth) noexcept {
    switch (value.kind()) {
      case Value::Kind::Null:
        break;
      case Value::Kind::Boolean:
      case Value::Kind::Integer:
        return value.unsignedValue();
      case Value::Kind::Real:
        return std::bit_cast<std::uint64_t>(value.realValue());
      case Value::Kind::Date:
        return std::bit_cast<std::uint64_t>(value.date()->secondsSince2001);
      case Value::Kind::UID:
        return value.uid()->value;
      case Value::Kind::String:
        return keyedHash(*value.stringView());
      case Value::Kind::Data:
        return keyedHash(value.data()->bytes());
      case Value::Kind::Array: {
        std::uint64_t hash = 0;
        const ArrayRef array = value.array();
        for (const Value& element : array) {
          if (!mayGoOn(depth)) break;
          hash = std::rotl(hash, 1) + hashOf(element, depth + 1);
        }
        return hash;
      }
      case Value::Kind::Dictionary: {
        std::uint64_t hash = 0;
        const DictionaryRef dictionary = value.dictionary();
        for (const auto& [key, element] : dictionary) {
          if (!mayGoOn(depth)) break;
          hash += hashOf(keyedHash(key) ^ hashOf(element, depth + 1));
        }
        return hash;
      }
    }
    return 0;
  }

  /// A client's containers that hold themselves have no end. What lies beyond is left to the
  /// comparison, and there are few records so large.
  bool mayGoOn(int depth) noexcept {
    if (depth > kMaximumNesting || _left == 0) return false;
    --_left;
    return true;
  }

  std::size_t _left = 100'000;
};

}  // namespace

RecordsByContent::Content::Content(const DictionaryRef& of) noexcept
    : record(of), hash(ContentHashing().hashOf(of)) {}

void RecordsByContent::file(const DictionaryRef& record, std::size_t position) {
  _positions[Content(record)].list.push_back(position);
}

std::size_t RecordsByContent::take(const DictionaryRef& content) {
  const auto found = _positions.find(Content(content));
  if (found == _positions.end()) return kNoRecord;
  Positions& positions = found->second;
  return positions.taken < positions.list.size() ? positions.list[positions.taken++] : kNoRecord;
}

}  // namespace tallbook
