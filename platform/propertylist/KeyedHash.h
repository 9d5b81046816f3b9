#pragma once

#include <cstdint>
#include <string_view>

namespace tallbook {

/// A hash of `bytes` under a key of this process's own, so that nobody can prepare a file whose
/// strings all collide. All of its bits are good.
std::uint64_t keyedHash(std::string_view bytes) noexcept;

}  // namespace tallbook
