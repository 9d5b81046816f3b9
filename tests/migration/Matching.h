// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <gtest/gtest.h>

#include "tallbook/Value.h"

namespace tallbook::test {

/// Whether two property lists are equal, where a text "{UUID name}" of the expected one stands for
/// any UUID, the same one wherever the name is the same and another for every other name, and
/// where lists of enabled dataclasses may stand in any order.
::testing::AssertionResult matches(const Value& expected, const Value& actual);

}  // namespace tallbook::test
