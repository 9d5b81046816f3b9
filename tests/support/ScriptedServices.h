// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tallbook/Value.h"

#include "platform/DeviceServices.h"
#include "platform/Logs.h"
#include "platform/Preferences.h"
#include "platform/linux/LinuxResourceBundle.h"

namespace tallbook {

/// The library log's lines, kept. Tests that look at the cost of a silent log switch it off.
class CapturedSystemLog final : public SystemLog {
 public:
  std::vector<std::string> lines;
  bool listening = true;

  bool hasListener() const override { return listening; }
  void write(std::string_view subsystem, std::string_view category, std::string_view line) override;
  /// Whether a line holds `text`.
  bool contains(std::string_view text) const;
};

class CapturedConsoleLog final : public ConsoleLog {
 public:
  std::vector<std::string> lines;

  void write(std::string_view line) override { lines.emplace_back(line); }
  bool contains(std::string_view text) const;
};

/// The device's real preferences; changed-notices are kept instead of posted.
class CapturingPreferences final : public Preferences {
 public:
  /// Application identifier and key of each notice.
  std::vector<std::pair<std::string, std::string>> notices;

  explicit CapturingPreferences(Preferences& real) : _real(real) {}
  Value valueForKey(std::string_view key, std::string_view domain) override {
    return _real.valueForKey(key, domain);
  }
  void postChangedNotice(std::string_view applicationIdentifier, std::string_view key) override {
    notices.emplace_back(applicationIdentifier, key);
  }

 private:
  Preferences& _real;
};

class ScriptedDeviceInformation final : public DeviceInformation {
 public:
  std::map<std::string, Value, std::less<>> answers;

  Value answerForKey(std::string_view key) const override;
};

class ScriptedRestrictions final : public ManagementRestrictions {
 public:
  std::map<Feature, int> answers;
  /// What was asked about, in order.
  mutable std::vector<Feature> asked;

  std::vector<int> restrictionsOfFeatures(const std::vector<Feature>& features) const override;
};

class ScriptedPairingRecords final : public PairingRecords {
 public:
  /// Each domain's dictionary. A domain that is missing is a service out of reach.
  std::map<std::string, DictionaryRef, std::less<>> domains;

  Value valueForKey(std::string_view key, std::string_view domain) const override;
};

class ScriptedSyncSources final : public ExternalSyncSources {
 public:
  std::map<DataType, Answer> answers;

  Answer enabledSourcesForDataType(DataType type) const override;
};

class ScriptedHostedService final : public HostedServiceLibrary {
 public:
  std::string displayString = "Nimbrel";

  std::string accountTypeDisplayString() const override { return displayString; }
};

class CountingBookmarksLibrary final : public BookmarksLibrary {
 public:
  int cloudTabsNotices = 0;

  void cloudTabsWereSwitchedOn() override { ++cloudTabsNotices; }
};

/// Real UUIDs, until the test says that there are none.
class ScriptedUUIDs final : public UUIDSource {
 public:
  bool exhausted = false;

  explicit ScriptedUUIDs(UUIDSource& real) : _real(real) {}
  String newUUID() override { return exhausted ? String() : _real.newUUID(); }

 private:
  UUIDSource& _real;
};

class SettableClock final : public LocalClock {
 public:
  LocalTime time{2014, 3, 7, 14, 5, 9};
  /// 2014-03-07T14:05:09Z.
  std::chrono::sys_time<std::chrono::nanoseconds> moment{std::chrono::seconds(1'394'201'109)};

  LocalTime now() const override { return time; }
  std::chrono::sys_time<std::chrono::nanoseconds> instant() const override { return moment; }
};

/// The resources of the source tree, each of which a test may replace or take away. Replace them
/// before the library first reads them: it keeps what it read.
class ScriptedResources final : public ResourceBundle {
 public:
  /// `overriding` is an empty folder for the replacements.
  explicit ScriptedResources(std::string overriding);

  /// Replaces the property list `name`.plist.
  void replace(const std::string& name, const Value& content);
  /// Replaces the property list `name`.plist by these bytes, whatever they are.
  void replaceBytes(const std::string& name, std::string_view bytes);
  /// Replaces the string table of a language.
  void replaceStrings(const std::string& table, const std::string& language, const Value& texts);
  /// The path of a file that adds to the property list `name`.plist.
  std::string dropInNamed(const std::string& file, const std::string& name) const {
    return dropInFolder(name) + "/" + file;
  }
  /// Makes the property list `name`.plist look like it was never shipped.
  void takeAway(const std::string& name) { _missing.insert(name); }

  std::optional<std::string> pathForResource(std::string_view name,
                                             std::string_view type) const override;
  std::vector<std::string> pathsForResource(std::string_view name,
                                            std::string_view type) const override;
  std::string dropInFolder(std::string_view name) const override {
    return _bundle.dropInFolder(name);
  }
  std::string localizedString(std::string_view key, std::string_view table,
                              std::string_view defaultText) const override {
    return _bundle.localizedString(key, table, defaultText);
  }

 private:
  std::string _overriding;
  std::set<std::string, std::less<>> _missing;
  DeviceRoot _root{""};
  LinuxResourceBundle _bundle;
};

}  // namespace tallbook
