// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <system_error>

namespace tallbook::tool {

/// The bytes of a file or a pipe, wherever it lies, opened once and read to its end. An error, "no
/// such file" among them, and no bytes for everything else.
std::string bytesOfFile(const std::string& path, std::error_code& error);

/// The bytes of standard input to its end.
std::string bytesOfStandardInput(std::error_code& error);

/// "; run as mobile" where that is what the system's refusal takes; else empty.
std::string adviceOnRefusal(const std::error_code& error);
/// What to do about a file that the system does not let a program read.
std::string adviceOnUnreadable(const std::error_code& error);

}  // namespace tallbook::tool
