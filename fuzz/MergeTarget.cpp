// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// The merge of whole accounts, held to its slow definition.

#include "fuzz/Drawn.h"
#include "fuzz/Target.h"
#include "tests/store/DrawnLists.h"

namespace tallbook::fuzz {

void tryInput(std::string_view input) {
  Drawn drawn(input);
  const test::Draw draw = [&](int count) { return drawn.below(count); };
  if (drawn.oneIn(3)) {
    const test::ThreeListsOfTwins lists = test::drawnTwins(draw);
    test::checkMergeOfTwins(lists.base, lists.here, lists.file);
  } else {
    const test::ThreeLists lists = test::drawnLists(draw);
    test::checkMerge(lists.base, lists.here, lists.file);
  }
}

}  // namespace tallbook::fuzz
