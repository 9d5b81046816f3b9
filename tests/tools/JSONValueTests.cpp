// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <string>

#include "tests/support/Work.h"
#include "tools/tallbook/JSONValue.h"

namespace tallbook::tool {
namespace {

TEST(AJSONText, IsReadInProportionToItsKeys) {
  const auto work = [](std::size_t count) {
    std::string text = "{";
    for (std::size_t i = 0; i < count; ++i) text += '"' + std::to_string(1'000'000 + i) + "\":0,";
    text += "\"\":0}";
    return test::workOf([&] { EXPECT_EQ(jsonFromText(text).size(), count + 1); });
  };
  EXPECT_LT(work(4000), 3 * work(2000));
}

}  // namespace
}  // namespace tallbook::tool
