// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

#include "platform/linux/PreviewFileSystem.h"
#include "tests/support/Device.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/MemoryFileSystem.h"

namespace tallbook {
namespace {

using std::errc;
using namespace std::string_literals;

/// The real files of a device.
struct Real {
  explicit Real(const std::string& path) : folder(path), root(path), files(root) {}
  std::string folder;
  DeviceRoot root;
  LinuxFileSystem files;
};

/// The files of a device as a preview changes them.
struct Previewed {
  explicit Previewed(const std::string& path) : real(path), folder(path), files(real.files) {}
  Real real;
  std::string folder;
  PreviewFileSystem files;
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
  bool exists(const std::string& below) const {
    std::error_code error;
    const bool answer = kind.files.exists(at(below), error);
    EXPECT_FALSE(error) << below;
    return answer;
  }
  bool isDirectory(const std::string& below) const {
    std::error_code error;
    return kind.files.openFolder(at(below), error) != nullptr;
  }
  std::unique_ptr<Folder> folder(const std::string& below) const {
    std::error_code error;
    return kind.files.openFolder(at(below), error);
  }
  std::string contentOf(const std::string& below) const {
    std::error_code error;
    std::string bytes = kind.files.readFile(at(below), error);
    return error ? "(" + error.message() + ")" : bytes;
  }

  Kind kind{root()};
  FileSystem& files = kind.files;
};

using Kinds = ::testing::Types<Real, Previewed, InMemory, Wrapped>;
TYPED_TEST_SUITE(AFileSystem, Kinds);

TYPED_TEST(AFileSystem, KeepsBytesAsTheyAre) {
  for (const std::string& bytes : {""s, "a\0b\xff"s, std::string(3'000'000, 'x')}) {
    ASSERT_FALSE(this->files.createFile(this->at("/d/new"), bytes));
    EXPECT_TRUE(this->contentOf("/d/new") == bytes);
    ASSERT_FALSE(this->files.remove(this->at("/d/new")));
    EXPECT_FALSE(this->exists("/d/new"));
  }
}

TYPED_TEST(AFileSystem, ReplacesAFileByRenaming) {
  const auto folder = this->folder("/d");
  ASSERT_FALSE(this->files.createFile(this->at("/d/new"), "new bytes"));
  EXPECT_EQ(folder->renameToNew("new", "old"), errc::file_exists);
  ASSERT_FALSE(folder->rename("new", "old"));
  EXPECT_EQ(this->contentOf("/d/old"), "new bytes");
  ASSERT_FALSE(folder->renameToNew("old", "moved"));
  EXPECT_FALSE(this->exists("/d/old"));
  ASSERT_FALSE(this->files.replaceFile(this->at("/d/moved"), "replaced"));
  EXPECT_EQ(this->contentOf("/d/moved"), "replaced");
  EXPECT_FALSE(folder->flush());
}

TYPED_TEST(AFileSystem, TellsVersionsApart) {
  const auto folder = this->folder("/d");
  std::error_code error;
  const FileVersion old = folder->read("old").version;
  EXPECT_EQ(folder->look("old", error).version, old);
  ASSERT_FALSE(folder->link("old", *this->folder("/d/sub"), "kept"));
  EXPECT_EQ(folder->look("old", error).version, old) << "a second name is no change";
  std::vector<FileVersion> met{old};
  for (int round = 0; round < 20; ++round) {
    const std::string name = folder->freshName();
    const auto file = folder->create(name, error);
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->write("old bytes"));
    EXPECT_FALSE(file->finish(met.back()));
    ASSERT_FALSE(folder->rename(name, "old"));
    const FileVersion version = folder->look("old", error).version;
    EXPECT_EQ(std::ranges::count(met, version), 0);
    met.push_back(version);
  }
  EXPECT_FALSE(folder->look("none", error).version);
  EXPECT_FALSE(error);
}

TYPED_TEST(AFileSystem, KeepsNotesAndFolders) {
  const auto folder = this->folder("/d");
  std::error_code error;
  ASSERT_FALSE(folder->makeNote("note", "what it says"));
  EXPECT_EQ(folder->makeNote("note", "again"), errc::file_exists);
  EXPECT_EQ(folder->noteText("note", error), "what it says");
  EXPECT_EQ(folder->look("note", error).kind, FileKind::Link);
  EXPECT_EQ(folder->read("note").error, errc::no_such_file_or_directory);
  EXPECT_FALSE(folder->remove("note"));
  EXPECT_EQ(folder->noteText("note", error), "");
  EXPECT_EQ(error, errc::no_such_file_or_directory);
  EXPECT_FALSE(folder->makeFolder("private", "mobile", "mobile"));
  EXPECT_EQ(folder->makeFolder("private", "mobile", "mobile"), errc::file_exists);
  EXPECT_TRUE(folder->makeFolder("nobody's", "nobody-has-this-name", "mobile"));
  EXPECT_FALSE(this->exists("/d/nobody's"));
  ASSERT_FALSE(createFile(*folder->folder("private", error), "in it", "1"));
  EXPECT_EQ(this->contentOf("/d/private/in it"), "1");
  EXPECT_EQ(folder->folder("old", error), nullptr);
  EXPECT_EQ(error, errc::not_a_directory);
  std::vector<std::string> names = folder->names(error);
  std::ranges::sort(names);
  EXPECT_EQ(names, (std::vector<std::string>{"old", "private", "sub"}));
}

TYPED_TEST(AFileSystem, ListsAFolderAfreshHoweverManyNamesItHas) {
  const auto folder = this->folder("/d/sub");
  std::vector<std::string> made;
  std::error_code error;
  for (int number = 100; number < 601; ++number) {
    if (number % 100 == 0) {
      std::vector<std::string> names = folder->names(error);
      std::ranges::sort(names);
      EXPECT_EQ(names, made);
      EXPECT_FALSE(error);
    }
    made.push_back("a name of some length " + std::to_string(number));
    ASSERT_FALSE(folder->makeNote(made.back(), "x"));
  }
}

TYPED_TEST(AFileSystem, TellsDirectoriesFromFiles) {
  EXPECT_FALSE(this->files.createDirectories(this->at("/d/sub"), 0755)) << "it is there already";
  EXPECT_FALSE(this->files.createDirectories(this->at("/e/f/g"), 0755));
  EXPECT_TRUE(this->isDirectory("/e/f/g"));
  EXPECT_TRUE(this->exists("/e/f"));
  EXPECT_FALSE(this->isDirectory("/d/old"));
  EXPECT_FALSE(this->isDirectory("/d/none"));
}

TYPED_TEST(AFileSystem, ChangesNothingWhenItFails) {
  FileSystem& disk = this->files;
  const auto below = [this](const char* name) { return this->at(name); };
  const auto read = [&](const char* name) {
    std::error_code error;
    EXPECT_EQ(disk.readFile(below(name), error), "");
    return error;
  };
  const auto folder = this->folder("/d");
  std::error_code failure;
  const auto given = folder->create("given", failure);
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
      {"remove nothing", disk.remove(below("/d/none")), errc::no_such_file_or_directory},
      {"remove a directory", disk.remove(below("/d/sub")), errc::is_a_directory},
      {"make over a file", disk.createDirectories(below("/d/old"), 0755), errc::not_a_directory},
      {"make below a file", disk.createDirectories(below("/d/old/x"), 0755), errc::not_a_directory},
      {"rename nothing", folder->rename("none", "old"), errc::no_such_file_or_directory},
      {"rename onto a directory", folder->rename("old", "sub"), errc::is_a_directory},
      {"rename nothing to a new name", folder->renameToNew("none", "x"),
       errc::no_such_file_or_directory},
      {"link nothing", folder->link("none", *folder, "x"), errc::no_such_file_or_directory},
      {"link over", folder->link("old", *folder, "sub"), errc::file_exists},
      {"give to nobody", given->giveTo("nobody-has-this-name", "mobile"), errc::invalid_argument},
      {"give to no group", given->giveTo("mobile", "nobody-has-this-name"), errc::invalid_argument},
      {"open nothing", (disk.openFolder(below("/n"), failure), failure),
       errc::no_such_file_or_directory},
      {"open a file", (disk.openFolder(below("/d/old"), failure), failure), errc::not_a_directory},
  };
  for (const auto& [what, error, expected] : cases) {
    EXPECT_TRUE(error == expected) << what << ": " << error.message();
  }
  EXPECT_EQ(this->contentOf("/d/old"), "old bytes");
  EXPECT_TRUE(this->isDirectory("/d/sub"));
  EXPECT_FALSE(this->exists("/d/x") || this->exists("/n"));
}

TEST(AFailingFileSystem, FailsOnceAndStopsForGood) {
  MemoryFileSystem memory;
  FailingFileSystem files(memory);
  std::error_code error;
  // Each creation opens the folder, makes, writes and finishes the file.
  files.failAt(6, make_error_code(errc::no_space_on_device));
  EXPECT_FALSE(files.createFile("/a", "1"));
  EXPECT_EQ(files.createFile("/b", "1"), errc::no_space_on_device);
  EXPECT_FALSE(files.createFile("/c", "1"));
  EXPECT_FALSE(memory.exists("/b", error));

  files.stopAt(3);
  EXPECT_THROW((void)files.createFile("/d", "1234"), Stopped);
  EXPECT_EQ(files.names(), (std::vector<std::string>{"openFolder", "create", "write"}));
  EXPECT_THROW((void)files.remove("/a"), Stopped);
  EXPECT_THROW((void)files.exists("/a", error), Stopped);
  EXPECT_TRUE(memory.exists("/a", error));
  EXPECT_EQ(memory.readFile("/d", error), "12") << "cut off in the middle";
}

}  // namespace
}  // namespace tallbook
