// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "tallbook/PlugInClass.h"
#include "tallbook/Vocabulary.h"

namespace {

using namespace tallbook;
namespace fs = std::filesystem;

/// A device tree may bring the library once more, and name it as the module of a class that stands
/// in the library.
class ASecondCopy : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "tallbook-copy-XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    folder = name;
    fs::copy_file(LIBRARY, folder / "libtallbook.so.1");
  }
  void TearDown() override { fs::remove_all(folder); }

  void* load() const {
    return ::dlopen((folder / "libtallbook.so.1").c_str(), RTLD_NOW | RTLD_LOCAL);
  }

  fs::path folder;
};

TEST_F(ASecondCopy, LeavesTheConstantsAndTheClassesOfTheFirst) {
  const String held = kAccountDataclassMail;
  const PlugInClass* const registered = tallbookClassNamed("DeviceLocalAccount");
  void* const copy = load();
  ASSERT_NE(copy, nullptr) << ::dlerror();
  ASSERT_NE(::dlsym(copy, "tallbookClassNamed"), nullptr);
  EXPECT_EQ(kAccountDataclassMail.blob(), held.blob()) << "the same text, not an equal one";
  EXPECT_EQ(kAccountDataclassMail, "com.orvane.Dataclass.Mail");
  EXPECT_EQ(tallbookClassNamed("DeviceLocalAccount"), registered);
}

// What is wrong here shows under the address sanitizer: both copies destroy the constants.
TEST_F(ASecondCopy, LetsTheProcessEndInTheOrdinaryWay) {
  EXPECT_EXIT(std::exit(load() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

}  // namespace
