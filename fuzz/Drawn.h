// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <string_view>

namespace tallbook::fuzz {

/// Decisions that are drawn from an input, one after the other. When it is used up every number is
/// 0, so a grammar lets 0 be what ends something.
class Drawn {
 public:
  explicit Drawn(std::string_view input)
      : _provider(reinterpret_cast<const std::uint8_t*>(input.data()), input.size()) {}

  bool isUsedUp() { return _provider.remaining_bytes() == 0; }
  /// 0 to `count` - 1.
  int below(int count) { return _provider.ConsumeIntegralInRange(0, count - 1); }
  /// Rarely true; never when the input is used up.
  bool oneIn(int count) { return below(count) == count - 1; }
  template <class Number>
  Number number() {
    return _provider.ConsumeIntegral<Number>();
  }
  template <class T, std::size_t count>
  const T& oneOf(const T (&choices)[count]) {
    return choices[below(static_cast<int>(count))];
  }
  /// Any bytes, as many as the input says.
  std::string bytes(std::size_t most) { return _provider.ConsumeRandomLengthString(most); }
  /// All that is left.
  std::string rest() { return _provider.ConsumeRemainingBytesAsString(); }

 private:
  FuzzedDataProvider _provider;
};

}  // namespace tallbook::fuzz
