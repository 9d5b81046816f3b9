// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>

#include "tallbook/Value.h"

namespace tallbook::bench {

/// The top level of an accounts file of `records` accounts with ten keys each, none of which the
/// fixers touch. Each account has `childrenPerRecord` children, of ten keys as well, under an
/// eleventh key. Equal numbers give equal trees.
Value accountsFileTree(std::size_t records, std::size_t childrenPerRecord);

/// Identifier of the top-level account at that place of the tree.
String identifierOf(std::size_t record);

}  // namespace tallbook::bench
