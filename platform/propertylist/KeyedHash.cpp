// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/KeyedHash.h"

#include <cstring>
#include <random>

namespace tallbook {
namespace {

struct Key {
  std::uint64_t start;
  std::uint64_t block;
  std::uint64_t end;
};

std::uint64_t randomWord(std::random_device& random) {
  return std::uint64_t{random()} << 32 | random();
}

const Key& processKey() {
  static const Key key = [] {
    std::random_device random;
    return Key{randomWord(random), randomWord(random), randomWord(random)};
  }();
  return key;
}

template <class Word = std::uint64_t>
Word wordAt(const char* at) noexcept {
  Word word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

/// The two halves of the 128-bit product, folded into one: every bit of the result depends on
/// every bit of both factors.
std::uint64_t folded(std::uint64_t a, std::uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

}  // namespace

// The construction of wyhash (Wang Yi, in the public domain), with random words in the place of
// its constants.
std::uint64_t keyedHash(std::string_view bytes) noexcept {
  const Key& key = processKey();
  const char* at = bytes.data();
  std::size_t left = bytes.size();
  std::uint64_t state = key.start ^ left;
  for (; left > 16; at += 16, left -= 16) {
    state = folded(wordAt(at) ^ key.block, wordAt(at + 8) ^ state);
  }
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  if (left >= 8) {
    first = wordAt(at);
    last = wordAt(at + left - 8);
  } else if (left >= 4) {
    first = wordAt<std::uint32_t>(at);
    last = wordAt<std::uint32_t>(at + left - 4);
  } else if (left > 0) {
    const char all[] = {at[0], at[left / 2], at[left - 1], 0};
    first = wordAt<std::uint32_t>(all);
  }
  return folded(folded(first ^ key.block, last ^ state), key.end);
}

}  // namespace tallbook
