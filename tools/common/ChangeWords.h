// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tallbook/ChangedAccount.h"

namespace tallbook::tool {

/// "Mail on", "Mail provisioned", "Port changed". Lists of dataclasses differ dataclass by
/// dataclass; where only their order does, or an empty one came or went, the list itself does.
std::vector<std::string> wordsFor(const ChangedKey& change);

}  // namespace tallbook::tool
