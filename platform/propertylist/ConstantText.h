// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <algorithm>
#include <cstddef>

#include "tallbook/String.h"

namespace tallbook {

/// A blob in static storage, made by the compiler and never destroyed, and the bytes behind it.
template <std::size_t size>
class ConstantText {
 public:
  constexpr explicit ConstantText(const char (&text)[size]) noexcept
      : _blob(size - 1, Blob::Forever()) {
    std::copy_n(text, size, _bytes);
  }
  constexpr Blob& blob() noexcept { return _blob; }

 private:
  Blob _blob;
  char _bytes[size] = {};
};

/// The characters of a literal, as an argument of a template.
template <std::size_t size>
struct Literal {
  consteval Literal(const char (&text)[size]) noexcept { std::copy_n(text, size, characters); }
  char characters[size] = {};
};

/// The text of that literal; equal literals share one.
template <Literal literal>
constinit inline ConstantText constantText(literal.characters);

}  // namespace tallbook
