// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>

namespace tallbook {

/// The text in upper case, one character at a time and in no language in particular: what has no
/// upper case of its own, such as "ß", stays. The letters of ASCII alone where the text is no UTF-8
/// or the system lacks the table.
std::string upperCase(std::string_view utf8);

}  // namespace tallbook
