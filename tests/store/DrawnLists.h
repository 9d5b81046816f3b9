// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>
#include <vector>

#include "tests/store/MergeDefinition.h"

namespace tallbook::test {

/// A number from 0 to `count` - 1, from wherever the decisions come that make a list.
using Draw = std::function<int(int count)>;

// What a merge is given, out of small worlds, in which the same change is often made on two sides

struct ThreeLists {
  Records base, here, file;
};
ThreeLists drawnLists(const Draw& draw);

/// Of accounts that share identifiers or have none, each change marked as `checkMergeOfTwins` says.
struct ThreeListsOfTwins {
  Records base;
  std::vector<HeldRecord> here;
  Records file;
};
ThreeListsOfTwins drawnTwins(const Draw& draw);

}  // namespace tallbook::test
