// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "tallbook/ChangedAccount.h"

#include "tools/common/Output.h"

namespace tallbook::tool {

/// A line for each record that differs and for each of its keys, or JSON: a record that came or
/// went counts as one whose every key did.
void printDifferences(const AccountsFileDifferences& differences, bool asJSON);
JSON jsonFromDifferences(const AccountsFileDifferences& differences);
/// All of them on one line: the records, and the keys of those that are there before and after.
std::string summaryOfDifferences(const AccountsFileDifferences& differences);

}  // namespace tallbook::tool
