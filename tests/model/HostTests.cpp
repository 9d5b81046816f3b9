// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <string>

#include "tallbook/Host.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "platform/Platform.h"

namespace tallbook {
namespace {

TEST(AHost, HasAFolderAsItsRoot) {
  const auto before = Platform::generation();
  for (const std::string root : {"/nowhere/device", "/dev/null"}) {
    try {
      configureHost({.root = root});
      ADD_FAILURE() << root;
    } catch (const InternalConsistencyFailure& failure) {
      EXPECT_EQ(failure.what(), "The root of the device tree is no folder: " + root);
    }
  }
  EXPECT_EQ(Platform::generation(), before) << "the process stays as it was";
}

}  // namespace
}  // namespace tallbook
