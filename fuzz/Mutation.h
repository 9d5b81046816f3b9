// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace tallbook::fuzz {

/// `bytes` after one of the engine's own mutations; at most `most` of them.
inline std::string mutated(std::string bytes, std::size_t most) {
  const std::size_t size = bytes.size() < most ? bytes.size() : most;
  bytes.resize(most);
  bytes.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(bytes.data()), size, most));
  return bytes;
}

using Random = std::minstd_rand;

/// 0 to `count` - 1.
inline std::size_t below(Random& random, std::size_t count) {
  return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
}

}  // namespace tallbook::fuzz
