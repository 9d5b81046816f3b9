// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/DynamicModuleLoader.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

class AModuleLoader : public ThrowAwayDevice {
 protected:
  const void* load(const std::string& path) { return loader.load(path, error); }

  DeviceRoot system{""};
  DynamicModuleLoader loader{system, false};
  std::string error;
};

TEST_F(AModuleLoader, KnowsAModuleByEveryPathToIt) {
  std::filesystem::create_symlink(TEST_MODULE, path("/alias.so"));
  const void* module = load(TEST_MODULE);
  ASSERT_NE(module, nullptr) << error;
  EXPECT_EQ(load(path("/alias.so")), module);
}

TEST_F(AModuleLoader, BindsEverythingAtOnce) {
  EXPECT_EQ(load(TEST_UNBOUND_MODULE), nullptr);
  EXPECT_NE(error.find("thisFunctionIsNowhere"), std::string::npos) << error;
}

TEST_F(AModuleLoader, SaysWhyAFileIsNoModule) {
  test::writeFile(path("/text.so"), "not a module");
  std::filesystem::copy_file(TEST_MODULE, path("/g\u00e4ste.so"));
  for (const std::string& file :
       {path("/missing.so"), path("/text.so"), path("/g\u00e4ste.so"), std::string()}) {
    error.clear();
    EXPECT_EQ(load(file), nullptr) << file;
    EXPECT_NE(error.find(file), std::string::npos) << error;
    EXPECT_FALSE(error.empty());
  }
}

// The tree is somebody's; what lies around it is not the tree's to run.
TEST_F(AModuleLoader, TakesOnlyWhatLiesBelowTheRoot) {
  const DeviceRoot tree(path("/tmp"));
  DynamicModuleLoader confined(tree, false);
  std::filesystem::copy_file(TEST_MODULE, path("/tmp/own.so"));
  std::filesystem::copy_file(TEST_MODULE, path("/outside.so"));
  std::filesystem::create_symlink(path("/outside.so"), path("/tmp/link.so"));
  std::filesystem::create_symlink("/own.so", path("/tmp/alias.so"));
  const void* own = confined.load(path("/tmp/own.so"), error);
  EXPECT_NE(own, nullptr) << error;
  EXPECT_EQ(confined.load(path("/tmp/alias.so"), error), own) << "links start at the root";
  for (const char* below : {"/tmp/link.so", "/tmp/../outside.so", "/outside.so"}) {
    EXPECT_EQ(confined.load(path(below), error), nullptr) << below;
  }
}

TEST_F(AModuleLoader, RunsNoCodeOfAnotherUserUnlessTold) {
  std::filesystem::copy_file(TEST_MODULE, path("/tmp/own.so"));
  if (::chown(path("/tmp").c_str(), 54321, 54321) != 0) GTEST_SKIP() << "only root gives away";
  const DeviceRoot tree(path("/tmp"));
  EXPECT_EQ(DynamicModuleLoader(tree, false).load(path("/tmp/own.so"), error), nullptr);
  EXPECT_NE(error.find("another user"), std::string::npos) << error;
  EXPECT_NE(DynamicModuleLoader(tree, true).load(path("/tmp/own.so"), error), nullptr) << error;
}

}  // namespace
}  // namespace tallbook
