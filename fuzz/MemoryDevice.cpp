// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "fuzz/MemoryDevice.h"

#include <filesystem>
#include <memory>
#include <stdlib.h>

#include "tallbook/PropertyList.h"

#include "fuzz/Check.h"

namespace tallbook::fuzz {
namespace fs = std::filesystem;
namespace {

/// The folder for what is not in memory: the migration's lock. It goes with the process.
class Root {
 public:
  Root() : _path(fs::temp_directory_path() / "tallbook-fuzz-XXXXXX") {
    check(::mkdtemp(_path.data()) != nullptr, "there is room for a device");
    fs::create_directory(_path + "/tmp");
  }
  ~Root() {
    std::error_code ignored;
    fs::remove_all(_path, ignored);
  }
  Root(const Root&) = delete;
  Root& operator=(const Root&) = delete;

  const std::string& path() const { return _path; }

 private:
  std::string _path;
};

const std::string& root() {
  static const Root made;
  return made.path();
}

/// Every type that the shipped resource knows, each without a class that makes or hears of its
/// accounts: their modules are not on this device.
std::string withoutCreators(const std::string& shipped) {
  const auto types = propertyListFromBytes(shipped);
  check(types.has_value(), "the shipped resource is read");
  const DictionaryRef without = Dictionary::make();
  for (const auto& [type, creators] : types->dictionary()) without->set(type, Array::make());
  return *binaryPropertyList(without);
}

MemoryFileSystem::Disk freshDisk(TestPlatform& platform) {
  MemoryFileSystem files;
  const auto put = [&](const std::string& path, const std::string& bytes) {
    check(!files.createDirectories(SplitPath(path).folder, 0755), "a folder is made");
    check(!files.createFile(path, bytes), "a file is made");
  };
  for (const char* name :
       {"AccountClasses", "AccountCreators", "AccountTypesProperties", "DataclassesProperties"}) {
    const auto path = platform.resources.pathForResource(name, "plist");
    check(path.has_value(), std::string("there is a resource ") + name);
    std::error_code error;
    const std::string bytes = platform.realFileSystem().readFile(*path, error);
    check(!error, "a resource is read");
    put(*path, std::string_view(name) == "AccountCreators" ? withoutCreators(bytes) : bytes);
  }
  for (const char* folder : {"/Preferences", "/Mail", "/Logs/Dorvix"}) {
    check(!files.createDirectories(root() + "/var/mobile/Library" + folder, 0755),
          "a folder is made");
  }
  return files.disk;
}

}  // namespace

MemoryDevice::MemoryDevice() {
  auto platform = std::make_unique<TestPlatform>(root());
  _platform = platform.get();
  static const MemoryFileSystem::Disk fresh = freshDisk(*platform);
  _files.disk = fresh;
  platform->replaceFileSystem(_files);
  Platform::install(std::move(platform));
}

MemoryDevice::~MemoryDevice() {
  _platform->replaceFileSystem(_platform->realFileSystem());
}

std::string MemoryDevice::home() const {
  return root() + "/var/mobile";
}

std::string MemoryDevice::accountsPath() const {
  return home() + "/Library/Preferences/com.orvane.tallbook.plist";
}

void MemoryDevice::put(const std::string& path, std::string_view bytes) {
  check(!_files.replaceFile(path, bytes), "a file is put there");
}

std::optional<std::string> MemoryDevice::at(const std::string& path) const {
  std::error_code error;
  std::string bytes = _files.readFile(path, error);
  return error ? std::nullopt : std::optional(std::move(bytes));
}

}  // namespace tallbook::fuzz
