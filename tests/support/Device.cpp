// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/Device.h"

#include <filesystem>
#include <stdexcept>
#include <stdlib.h>
#include <unistd.h>

namespace tallbook {
namespace fs = std::filesystem;
namespace {

std::string makeFolderIn(const fs::path& folder) {
  std::string path = folder / "tallbook-device-XXXXXX";
  if (!::mkdtemp(path.data())) throw std::runtime_error("no folder for a device");
  return path;
}

}  // namespace

ThrowAwayDevice::ThrowAwayDevice() : ThrowAwayDevice(fs::temp_directory_path()) {}

ThrowAwayDevice::ThrowAwayDevice(const std::string& folder) : _root(makeFolderIn(folder)) {
  const std::string uid = std::to_string(::getuid());
  const std::string gid = std::to_string(::getgid());
  test::writeFile(path("/etc/passwd"),
                  "mobile:x:" + uid + ":" + gid + "::/var/mobile:/bin/false\n");
  test::writeFile(path("/etc/group"), "mobile:x:" + gid + ":\n");
  fs::create_directories(path("/tmp"));
  fs::create_directories(path("/usr/share/tallbook"));
  fs::create_directories(preferencesFolder());
  fs::create_directories(path("/var/mobile/Library/Mail"));
  speak("C");
  restart();
}

ThrowAwayDevice::~ThrowAwayDevice() {
  std::error_code ignored;
  fs::remove_all(_root, ignored);
}

void ThrowAwayDevice::restart() {
  auto platform = std::make_unique<TestPlatform>(_root);
  _platform = platform.get();
  Platform::install(std::move(platform));
}

void ThrowAwayDevice::speak(const std::string& locale) {
  ::setenv("LC_ALL", locale.c_str(), 1);
  ::unsetenv("LANGUAGE");
}

std::vector<std::string> ThrowAwayDevice::namesBesideGenerations() const {
  std::vector<std::string> names = test::namesIn(preferencesFolder());
  std::erase(names, fs::path(generationsFolder()).filename().string());
  return names;
}

void ThrowAwayDevice::writeAccounts(std::initializer_list<Value> records, std::uint64_t version) {
  writeAccountsFile(Dictionary::make({{"Version", version}, {"Accounts", Array::make(records)}}));
}

ArrayRef ThrowAwayDevice::readAccounts() const {
  const DictionaryRef file = readAccountsFile().dictionary();
  const ArrayRef accounts = file ? (*file)["Accounts"].array() : nullptr;
  return accounts ? accounts : Array::make();
}

}  // namespace tallbook
