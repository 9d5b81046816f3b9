// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// Facts about the device. Absent facts are null; callers choose their own fallback.
class DeviceInformation {
 public:
  virtual ~DeviceInformation() = default;
  virtual Value answerForKey(std::string_view key) const = 0;
};

/// Device management's restrictions of features.
class ManagementRestrictions {
 public:
  enum class Feature {
    CloudDocumentSync,
    PhotoStream,
    SharedPhotoStreams,
    CloudBackup,
    PassesWhileLocked
  };
  /// The answer that withdraws a feature; every other answer allows it.
  static constexpr int kExplicitlyNotAllowed = 2;

  virtual ~ManagementRestrictions() = default;
  /// The service's present answers about the features, in their order, as of one moment; 0 where it
  /// is absent.
  virtual std::vector<int> restrictionsOfFeatures(const std::vector<Feature>& features) const = 0;
  int restrictionOfFeature(Feature feature) const {
    return restrictionsOfFeatures({feature}).front();
  }
};

/// What the device-pairing service recorded about the computers that sync to the device.
class PairingRecords {
 public:
  virtual ~PairingRecords() = default;
  /// The value of `key` in `domain`, asked over a connection of its own; the whole domain for an
  /// empty key. Null when the service cannot be reached or has none.
  virtual Value valueForKey(std::string_view key, std::string_view domain) const = 0;
};

/// External sources that sync a kind of data to the device, as the accounts daemon knows them.
class ExternalSyncSources {
 public:
  enum class DataType { Bookmarks, Calendars, Contacts, Notes };
  struct Answer {
    std::vector<String> sources;
    std::string error;  ///< empty when the daemon answered
  };

  virtual ~ExternalSyncSources() = default;
  /// The enabled sources; none, without an error, where there is no daemon.
  virtual Answer enabledSourcesForDataType(DataType type) const = 0;
};

/// The hosted service's own account library.
class HostedServiceLibrary {
 public:
  virtual ~HostedServiceLibrary() = default;
  /// What the service's accounts are called to the user; a fixed text where it is absent.
  virtual std::string accountTypeDisplayString() const = 0;
};

/// The bookmarks library.
class BookmarksLibrary {
 public:
  virtual ~BookmarksLibrary() = default;
  /// Tells it that cloud tabs were switched on; nothing where it is absent.
  virtual void cloudTabsWereSwitchedOn() = 0;
};

/// Universally unique identifiers.
class UUIDSource {
 public:
  virtual ~UUIDSource() = default;
  /// A new random UUID in its 36-character upper-case text form (RFC 4122); null when none can be
  /// made.
  virtual String newUUID() = 0;
};

/// A local calendar date and time.
struct LocalTime {
  int year = 0;
  int month = 0;  ///< 1 to 12
  int day = 0;    ///< 1 to 31
  int hour = 0;   ///< 0 to 23
  int minute = 0;
  int second = 0;
};

/// The device's clock.
class LocalClock {
 public:
  virtual ~LocalClock() = default;
  /// In the device's time zone.
  virtual LocalTime now() const = 0;
  /// The same for all time zones. May stand still or go back, as the clock is set.
  virtual std::chrono::sys_time<std::chrono::nanoseconds> instant() const = 0;
};

}  // namespace tallbook
