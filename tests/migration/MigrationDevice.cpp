// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/migration/MigrationDevice.h"

#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

namespace tallbook {
namespace fs = std::filesystem;
namespace {

// A migration saves seven times and some tests migrate a hundred times, so their devices stand in
// memory where they can: a disk would be flushed a thousand times, which other tests look at.
std::string fastFolder() {
  const char* const memory = "/dev/shm";
  return ::access(memory, W_OK | X_OK) == 0 ? memory : fs::temp_directory_path().string();
}

}  // namespace

MigrationDevice::MigrationDevice() : ThrowAwayDevice(fastFolder()) {
  arrange(Dictionary::make());
}

Value MigrationDevice::data(const std::string& name) {
  const Value read = test::readPropertyList(TALLBOOK_TEST_DATA "/data/" + name + ".plist");
  if (read.isNull()) throw std::runtime_error("no test data " + name);
  return read;
}

void MigrationDevice::arrange(const DictionaryRef& device) {
  fs::remove_all(home() + "/Library");
  for (const char* folder : {"Preferences", "Mail", "Logs/Dorvix"}) {
    fs::create_directories(home() + "/Library/" + folder);
  }
  for (const auto& [key, file] :
       {std::pair{"Accounts File", accountsPath()}, std::pair{"Legacy Mail", legacyMailPath()},
        std::pair{"Legacy Exchange", legacySyncoraPath()}}) {
    if (const Value* content = device->find(key)) test::writePropertyList(file, *content);
  }
  restart();
  tellFacts(device);
}

void MigrationDevice::tellFacts(const DictionaryRef& device) {
  platform().information.answers["CPUArchitecture"] = (*device)["CPUArchitecture"];
  platform().information.answers["RegionalBehaviorGoogleMail"] = (*device)["Google Mail"];
  const DictionaryRef sources = (*device)["Sync Sources"].dictionary();
  if (!sources) return;
  using DataType = ExternalSyncSources::DataType;
  for (const auto& [key, type] :
       {std::pair{"Bookmarks", DataType::Bookmarks}, std::pair{"Calendars", DataType::Calendars},
        std::pair{"Contacts", DataType::Contacts}, std::pair{"Notes", DataType::Notes}}) {
    ExternalSyncSources::Answer& answer = platform().syncSources.answers[type];
    answer.error = (*sources)[key].string().str();
    const ArrayRef names = (*sources)[key].array();
    if (!names) continue;
    for (const Value& name : *names) answer.sources.push_back(name.string());
  }
}

bool MigrationDevice::migrate() {
  return AccountsDataMigrator().performMigration();
}

bool MigrationDevice::isLockFree() const {
  const int file = ::open(lockPath().c_str(), O_RDONLY | O_CLOEXEC);
  const bool isFree = file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0;
  ::close(file);
  return isFree;
}

std::vector<std::string> MigrationDevice::generations() const {
  std::vector<std::string> bytes;
  const std::string folder = preferencesFolder() + "/.tallbook-generations/";
  for (const std::string& name : test::namesIn(folder)) {
    bytes.push_back(test::readFile(folder + name));
  }
  return bytes;
}

}  // namespace tallbook
