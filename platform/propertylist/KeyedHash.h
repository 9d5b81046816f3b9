#pragma once

#include <cstdint>
#include <string_view>

namespace tallbook {

/// A hash of `bytes` (SipHash-1-3) under a key of this process's own, so that nobody can prepare a
/// file whose strings all collide.
std::uint64_t keyedHash(std::string_view bytes) noexcept;

/// The same for a number, told apart by its `kind`.
std::uint64_t keyedHash(std::uint64_t bits, std::uint64_t kind) noexcept;

}  // namespace tallbook
