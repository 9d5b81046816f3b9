// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "bench/BenchDevice.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>
#include <unistd.h>

#include "tallbook/AccountsManager.h"
#include "tallbook/PropertyList.h"

#include "bench/PropertyListFiles.h"
#include "platform/linux/LinuxPlatform.h"

namespace tallbook::bench {
namespace fs = std::filesystem;

std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

void writeBytes(const std::string& path, const std::string& bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

std::string accountsFileBytes(std::size_t records, std::size_t childrenPerRecord) {
  return binaryPropertyList(accountsFileTree(records, childrenPerRecord)).value();
}

BenchDevice::BenchDevice(std::size_t records, std::size_t childrenPerRecord)
    : _root(fs::temp_directory_path() / "tallbook-bench-XXXXXX"),
      _bytes(accountsFileBytes(records, childrenPerRecord)) {
  if (!::mkdtemp(_root.data())) throw std::runtime_error("no folder for a device");
  const std::string user = std::to_string(::getuid());
  const std::string group = std::to_string(::getgid());
  writeBytes(_root + "/etc/passwd",
             "mobile:x:" + user + ":" + group + "::/var/mobile:/bin/false\n");
  fs::create_directories(_root + "/tmp");
  writeBytes(_root + "/etc/group", "mobile:x:" + group + ":\n");
  Platform::install(makeLinuxPlatform({_root, LinuxPlatformOptions::LogSink::Nowhere}));
  writeBytes(AccountsManager::fullPathToTallbookPlist(), _bytes);
}

BenchDevice::~BenchDevice() {
  std::error_code ignored;
  fs::remove_all(_root, ignored);
}

}  // namespace tallbook::bench
