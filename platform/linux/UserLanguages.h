// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

namespace tallbook {

/// The languages of the user's messages by the process's environment, the best first: "de_AT.UTF-8"
/// gives "de_AT" and "de". None for the locales "C" and "POSIX", for no locale and for a name that
/// is none. In every other locale the variable LANGUAGE goes before it, a list such as "sv:de_AT",
/// which ends at a "C" in it.
std::vector<std::string> userLanguages();

}  // namespace tallbook
