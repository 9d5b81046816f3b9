// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <system_error>

namespace tallbook {

/// Why a file can be given to nobody of a name. Each compares equal to an invalid argument.
std::error_code unknownAccount() noexcept;
std::error_code unknownGroup() noexcept;

}  // namespace tallbook
