#pragma once

#include <cstddef>

namespace tallbook {

/// The most values that a tree which is read or written may have, a shared one counted wherever it
/// occurs; keys are not counted.
inline constexpr std::size_t kMostValues = 10'000'000;

}  // namespace tallbook
