// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "tools/common/AccountsFile.h"

namespace tallbook::tool {

/// The accounts file that a text spells: JSON as `dump --json` prints it, or a property list.
/// `name` is what messages call it.
AccountsFile accountsFromText(const std::string& text, const std::string& name);
/// That of a file's text, or of standard input's for "-".
AccountsFile readAccountsText(const std::string& path);

}  // namespace tallbook::tool
