// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/store/DrawnLists.h"

namespace tallbook {
namespace {

int draw(int count) {
  return *rc::gen::inRange(0, count);
}

RC_GTEST_PROP(AnyThreeLists, MergeAsTheTableSays, ()) {
  const test::ThreeLists lists = test::drawnLists(draw);
  test::checkMerge(lists.base, lists.here, lists.file);
}

RC_GTEST_PROP(AnyThreeListsOfTwins, MergeWithoutALossOrADouble, ()) {
  const test::ThreeListsOfTwins lists = test::drawnTwins(draw);
  test::checkMergeOfTwins(lists.base, lists.here, lists.file);
}

}  // namespace
}  // namespace tallbook
