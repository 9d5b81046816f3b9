#pragma once

#include <system_error>

namespace tallbook {

/// Why a file can be given to nobody of a name. To those who compare, each is an invalid argument.
std::error_code unknownAccount() noexcept;
std::error_code unknownGroup() noexcept;

}  // namespace tallbook
