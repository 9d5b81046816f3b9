// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A whole migration of whatever device, and a second one, which has nothing left to do.

#include <map>
#include <string>

#include "tallbook/AccountsManager.h"

#include "fuzz/Check.h"
#include "fuzz/DrawnAccounts.h"
#include "fuzz/MemoryDevice.h"
#include "fuzz/Target.h"
#include "migration/AccountsDataMigrator.h"

namespace tallbook::fuzz {
namespace {

/// What an earlier release left on the device.
class DrawnDevice {
 public:
  explicit DrawnDevice(Drawn& drawn) : _drawn(drawn) {
    if (!drawn.oneIn(4)) _device.silence();
    if (!drawn.oneIn(8))
      _device.put(_device.accountsPath(), drawnFile(drawn, drawnAccountsFile(drawn)));
    if (drawn.oneIn(2)) putLegacyFile(mailPath(), {"DeliveryAccounts", "MailAccounts"});
    if (drawn.oneIn(2)) putLegacyFile(exchangePath(), {"SyncoraAccountsKey"});
    if (drawn.oneIn(16)) _device.put(preferences() + "/.removingOldAccounts", "");
    if (drawn.oneIn(16)) _device.put(mailPath() + ".original", "");
    tellFacts();
  }

  std::string mailPath() const { return _device.home() + "/Library/Mail/Accounts.plist"; }
  std::string exchangePath() const { return preferences() + "/com.orvane.Syncora.plist"; }

  /// One of which an account cannot be converted is left as it is; every other one goes.
  bool isLegacyFileLeft() const {
    bool isAnyLeft = false;
    for (const auto& [path, bytes] : _legacyFiles) {
      const auto there = _device.at(path);
      check(!there || *there == bytes, "a legacy file is removed or left as it is");
      isAnyLeft |= there.has_value();
    }
    return isAnyLeft;
  }

 private:
  std::string preferences() const { return _device.home() + "/Library/Preferences"; }

  void putLegacyFile(const std::string& path, std::initializer_list<const char*> lists) {
    const DictionaryRef file = Dictionary::make();
    for (const char* list : lists) {
      if (!_drawn.oneIn(8)) file->set(list, drawnRecords(_drawn));
    }
    if (_drawn.oneIn(16)) file->set(*lists.begin(), drawnValue(_drawn));
    _legacyFiles[path] = drawnFile(_drawn, file);
    _device.put(path, _legacyFiles[path]);
  }

  void tellFacts() {
    TestPlatform& platform = _device.platform();
    platform.information.answers["CPUArchitecture"] = _drawn.oneIn(2) ? "armv6" : "armv7";
    platform.information.answers["RegionalBehaviorGoogleMail"] = _drawn.oneIn(2);
    using DataType = ExternalSyncSources::DataType;
    for (const DataType type :
         {DataType::Bookmarks, DataType::Calendars, DataType::Contacts, DataType::Notes}) {
      ExternalSyncSources::Answer& answer = platform.syncSources.answers[type];
      if (_drawn.oneIn(4)) answer.error = "out of reach";
      while (_drawn.oneIn(3)) {
        answer.sources.push_back(_drawn.oneIn(2) ? String("DenyTethered") : drawnText(_drawn));
      }
    }
  }

  Drawn& _drawn;
  MemoryDevice _device;
  std::map<std::string, std::string> _legacyFiles;  ///< their bytes, by path
};

Value accountsOfFile() {
  const ArrayRef accounts = Array::make();
  const auto store = AccountsManager::init();
  for (const auto& account : *store->allBasicAccounts()) {
    accounts->append(account->properties()->frozenCopy());
  }
  return accounts;
}

bool migrate() {
  return AccountsDataMigrator().performMigration();
}

}  // namespace

void tryInput(std::string_view input) {
  Drawn drawn(input);
  const DrawnDevice device(drawn);
  check(migrate(), "a device is migrated");
  // The first one may only have finished the removal at which another was interrupted.
  if (AccountsDataMigrator().isNeeded()) check(migrate(), "a device is migrated after a removal");
  check(AccountsDataMigrator().isNeeded() == device.isLegacyFileLeft(),
        "nothing else is left to do");

  const Value migrated = accountsOfFile();
  check(migrate(), "a migrated device is migrated");
  check(accountsOfFile() == migrated, "a second migration changes no account");
}

}  // namespace tallbook::fuzz
