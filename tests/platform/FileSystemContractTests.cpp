#include <functional>
#include <gtest/gtest.h>

#include "platform/linux/LinuxFileSystem.h"
#include "tests/support/Device.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/MemoryFileSystem.h"

namespace tallbook {
namespace {

using std::errc;
using namespace std::string_literals;

/// The real files of a device.
struct Real {
  explicit Real(const std::string& root) : folder(root), files(root) {}
  std::string folder;
  LinuxFileSystem files;
};

struct InMemory {
  explicit InMemory(const std::string&) {}
  std::string folder;
  MemoryFileSystem files;
};

/// The wrapper while nothing is to fail.
struct Wrapped {
  explicit Wrapped(const std::string&) {}
  std::string folder;
  MemoryFileSystem inner;
  FailingFileSystem files{inner};
};

template <class Kind>
class AFileSystem : public ThrowAwayDevice {
 protected:
  AFileSystem() {
    EXPECT_FALSE(files.createDirectories(at("/d/sub"), 0755));
    EXPECT_FALSE(files.createFile(at("/d/old"), "old bytes"));
  }
  std::string at(const std::string& below) const { return kind.folder + below; }
  std::string contentOf(const std::string& below) const {
    std::error_code error;
    std::string bytes = kind.files.readFile(at(below), error);
    return error ? "(" + error.message() + ")" : bytes;
  }

  Kind kind{root()};
  FileSystem& files = kind.files;
};

using Kinds = ::testing::Types<Real, InMemory, Wrapped>;
TYPED_TEST_SUITE(AFileSystem, Kinds);

TYPED_TEST(AFileSystem, KeepsBytesAsTheyAre) {
  for (const std::string& bytes : {""s, "a\0b\xff"s, std::string(3'000'000, 'x')}) {
    ASSERT_FALSE(this->files.createFile(this->at("/d/new"), bytes));
    EXPECT_TRUE(this->contentOf("/d/new") == bytes);
    ASSERT_FALSE(this->files.copyFile(this->at("/d/new"), this->at("/d/copy")));
    EXPECT_TRUE(this->contentOf("/d/copy") == bytes);
    ASSERT_FALSE(this->files.rename(this->at("/d/copy"), this->at("/d/new")));
    EXPECT_FALSE(this->files.exists(this->at("/d/copy")));
    ASSERT_FALSE(this->files.remove(this->at("/d/new")));
    EXPECT_FALSE(this->files.exists(this->at("/d/new")));
  }
}

TYPED_TEST(AFileSystem, ReplacesAFileByRenaming) {
  ASSERT_FALSE(this->files.createFile(this->at("/d/new"), "new bytes"));
  ASSERT_FALSE(this->files.rename(this->at("/d/new"), this->at("/d/old")));
  EXPECT_EQ(this->contentOf("/d/old"), "new bytes");
  EXPECT_FALSE(this->files.flushDirectory(this->at("/d")));
}

TYPED_TEST(AFileSystem, TellsDirectoriesFromFiles) {
  EXPECT_FALSE(this->files.createDirectories(this->at("/d/sub"), 0755)) << "it is there already";
  EXPECT_FALSE(this->files.createDirectories(this->at("/e/f/g"), 0755));
  EXPECT_TRUE(this->files.isDirectory(this->at("/e/f/g")));
  EXPECT_TRUE(this->files.exists(this->at("/e/f")));
  EXPECT_FALSE(this->files.isDirectory(this->at("/d/old")));
  EXPECT_FALSE(this->files.isDirectory(this->at("/d/none")));
}

TYPED_TEST(AFileSystem, OffersFreshTemporaryPaths) {
  const auto first = this->files.temporaryPathIn(this->at("/d"));
  ASSERT_TRUE(first);
  EXPECT_TRUE(first->starts_with(this->at("/d/")));
  EXPECT_FALSE(this->files.createFile(*first, "1"));
  EXPECT_NE(this->files.temporaryPathIn(this->at("/d")), first);
  EXPECT_EQ(this->files.temporaryPathIn(this->at("/none")), std::nullopt);
  EXPECT_EQ(this->files.temporaryPathIn(this->at("/d/old")), std::nullopt);
}

TYPED_TEST(AFileSystem, ChangesNothingWhenItFails) {
  FileSystem& disk = this->files;
  const auto below = [this](const char* name) { return this->at(name); };
  const auto read = [&](const char* name) {
    std::error_code error;
    EXPECT_EQ(disk.readFile(below(name), error), "");
    return error;
  };
  const struct {
    const char* what;
    std::error_code error;
    errc expected;
  } cases[] = {
      {"read nothing", read("/d/none"), errc::no_such_file_or_directory},
      {"read a directory", read("/d"), errc::is_a_directory},
      {"create over", disk.createFile(below("/d/old"), "x"), errc::file_exists},
      {"create over a directory", disk.createFile(below("/d/sub"), "x"), errc::file_exists},
      {"create nowhere", disk.createFile(below("/n/x"), "x"), errc::no_such_file_or_directory},
      {"create below a file", disk.createFile(below("/d/old/x"), "x"), errc::not_a_directory},
      {"copy over", disk.copyFile(below("/d/old"), below("/d/sub")), errc::file_exists},
      {"copy nothing", disk.copyFile(below("/d/none"), below("/d/x")),
       errc::no_such_file_or_directory},
      {"copy a directory", disk.copyFile(below("/d/sub"), below("/d/x")), errc::is_a_directory},
      {"remove nothing", disk.remove(below("/d/none")), errc::no_such_file_or_directory},
      {"remove a directory", disk.remove(below("/d/sub")), errc::is_a_directory},
      {"make below a file", disk.createDirectories(below("/d/old/x"), 0755), errc::not_a_directory},
      {"rename nothing", disk.rename(below("/d/none"), below("/d/old")),
       errc::no_such_file_or_directory},
      {"rename onto a directory", disk.rename(below("/d/old"), below("/d/sub")),
       errc::is_a_directory},
      {"rename to nowhere", disk.rename(below("/d/old"), below("/n/x")),
       errc::no_such_file_or_directory},
      {"give to nobody", disk.setOwner(below("/d/old"), "nobody-has-this-name", "mobile"),
       errc::invalid_argument},
      {"give to no group", disk.setOwner(below("/d/old"), "mobile", "nobody-has-this-name"),
       errc::invalid_argument},
      {"give nothing", disk.setOwner(below("/d/none"), "mobile", "mobile"),
       errc::no_such_file_or_directory},
      {"flush nothing", disk.flushDirectory(below("/n")), errc::no_such_file_or_directory},
      {"flush a file", disk.flushDirectory(below("/d/old")), errc::not_a_directory},
  };
  for (const auto& [what, error, expected] : cases) {
    EXPECT_TRUE(error == expected) << what << ": " << error.message();
  }
  EXPECT_EQ(this->contentOf("/d/old"), "old bytes");
  EXPECT_TRUE(disk.isDirectory(below("/d/sub")));
  EXPECT_FALSE(disk.exists(below("/d/x")) || disk.exists(below("/n")));
}

TEST(AFailingFileSystem, FailsOnceAndStopsForGood) {
  MemoryFileSystem memory;
  FailingFileSystem files(memory);
  files.failAt(2, make_error_code(errc::no_space_on_device));
  EXPECT_FALSE(files.createFile("/a", "1"));
  EXPECT_EQ(files.createFile("/b", "1"), errc::no_space_on_device);
  EXPECT_FALSE(files.createFile("/c", "1"));
  EXPECT_FALSE(memory.exists("/b"));

  files.stopAt(1);
  EXPECT_THROW((void)files.createFile("/d", "1234"), Stopped);
  EXPECT_THROW((void)files.remove("/a"), Stopped);
  EXPECT_THROW((void)files.exists("/a"), Stopped);
  EXPECT_EQ(memory.journal(),
            (std::vector<std::string>{"createFile /a", "createFile /c", "createFile /d"}));
  std::error_code error;
  EXPECT_EQ(memory.readFile("/d", error), "12") << "cut off in the middle";
}

}  // namespace
}  // namespace tallbook
