// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

#include "tests/support/Files.h"
#include "tests/support/TestPlatform.h"

namespace tallbook {

/// A device tree in a folder of its own, removed at the end, whose "mobile" is the calling user;
/// its platform is installed as the process's. The language is English until `speak` is called.
class ThrowAwayDevice : public ::testing::Test {
 protected:
  ThrowAwayDevice();
  /// Below a folder of the test's choice.
  explicit ThrowAwayDevice(const std::string& folder);
  ~ThrowAwayDevice() override;

  /// The installed platform; lives until the next one is installed.
  TestPlatform& platform() { return *_platform; }
  /// Installs a fresh platform on the same device, as a new process would find it: what the
  /// library keeps for the life of the process is made anew.
  void restart();
  /// Sets the process's locale by its name, such as "de_AT.UTF-8".
  void speak(const std::string& locale);

  const std::string& root() const { return _root; }
  /// An absolute path below the root, for one such as "/var/mobile".
  std::string path(std::string_view below) const { return _root + std::string(below); }
  std::string home() const { return path("/var/mobile"); }
  std::string preferencesFolder() const { return path("/var/mobile/Library/Preferences"); }
  std::string accountsPath() const { return preferencesFolder() + "/com.orvane.tallbook.plist"; }
  std::string generationsFolder() const { return preferencesFolder() + "/.tallbook-generations"; }
  /// Names in the accounts file's folder, sorted, but for the generations' folder, which is there
  /// after the first save that replaced a file.
  std::vector<std::string> namesBesideGenerations() const;
  std::string legacyMailPath() const { return path("/var/mobile/Library/Mail/Accounts.plist"); }
  std::string legacySyncoraPath() const {
    return preferencesFolder() + "/com.orvane.Syncora.plist";
  }

  /// Writes the accounts file with this top level, of whatever kind.
  void writeAccountsFile(const Value& topLevel) {
    test::writePropertyList(accountsPath(), topLevel);
  }
  /// Writes an accounts file of these record dictionaries.
  void writeAccounts(std::initializer_list<Value> records, std::uint64_t version = 12);
  /// The accounts file's top level; null when there is none.
  Value readAccountsFile() const { return test::readPropertyList(accountsPath()); }
  /// The accounts file's record dictionaries; an empty array when there are none.
  ArrayRef readAccounts() const;

  /// Whether the library log has a line that holds `text`; the console log likewise.
  bool logContains(std::string_view text) const { return _platform->log.contains(text); }
  bool consoleContains(std::string_view text) const { return _platform->console.contains(text); }

 private:
  std::string _root;
  TestPlatform* _platform = nullptr;
};

}  // namespace tallbook
