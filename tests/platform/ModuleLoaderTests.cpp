#include <filesystem>
#include <gtest/gtest.h>

#include "platform/linux/DynamicModuleLoader.h"
#include "tests/support/Device.h"

namespace tallbook {
namespace {

class AModuleLoader : public ThrowAwayDevice {
 protected:
  const void* load(const std::string& path) { return loader.load(path, error); }

  DynamicModuleLoader loader;
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

}  // namespace
}  // namespace tallbook
