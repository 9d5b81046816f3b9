// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A whole migration of whatever device, which loses no account of a legacy file, and a second one,
// which has nothing left to do.

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/AccountsFileContents.h"
#include "tallbook/AccountsManager.h"
#include "tallbook/MigrationObserver.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "fuzz/Check.h"
#include "fuzz/DrawnAccounts.h"
#include "fuzz/MemoryDevice.h"
#include "fuzz/Target.h"
#include "migration/AccountsDataMigrator.h"

namespace tallbook::fuzz {
namespace {

using Identifiers = std::set<String>;

void addIdentifier(const Value& identifier, Identifiers& identifiers) {
  // An account of an empty one receives another.
  if (!identifier.string().empty()) identifiers.insert(identifier.string());
}

/// What the migration says of the accounts that it does not keep.
class Listener final : public MigrationObserver {
 public:
  void accountLeft(const Value& record, const std::string& /*why*/) override {
    addIdentifier(record.dictionary()[kAccountIdentifier], _left);
  }

  bool heardOf(const String& identifier) const { return _left.contains(identifier); }

 private:
  Identifiers _left;
};

/// Where a legacy file has its descriptions, and these their identifiers.
struct LegacyForm {
  std::vector<const char*> lists;
  std::string_view identifierKey;
};

constexpr std::string_view kUniqueId = "uniqueId";
const LegacyForm kMailForm = {{"DeliveryAccounts", "MailAccounts"}, kUniqueId};
const LegacyForm kExchangeForm = {{"SyncoraAccountsKey"}, "SyncoraAccountConfigurationAccountID"};

/// The identifiers of the descriptions in a legacy file that their accounts go on with. Of several
/// with one the first keeps it.
Identifiers identifiersIn(const std::string& bytes, const LegacyForm& form) {
  Identifiers identifiers;
  Identifiers exchanged;
  const auto root = propertyListFromBytes(bytes);
  const DictionaryRef file = root ? root->dictionary() : nullptr;
  for (const char* list : form.lists) {
    for (const Value& element : file[list].array()) {
      const DictionaryRef description = element.dictionary();
      if (!description) continue;
      const bool isRenamed = description->contains(form.identifierKey);
      // A version step, if it runs, gives an account another one that stands there.
      const bool hasAnother = form.identifierKey != kUniqueId && description->contains(kUniqueId);
      addIdentifier(description[isRenamed ? form.identifierKey : kAccountIdentifier.view()],
                    hasAnother ? exchanged : identifiers);
    }
  }
  for (const String& identifier : exchanged) identifiers.erase(identifier);
  return identifiers;
}

/// Those of all accounts of the accounts file, and of their children.
Identifiers identifiersInAccountsFile(const std::string& bytes) {
  Identifiers identifiers;
  const ArrayRef records = accountsFileFromBytes(bytes).records();
  for (const Value& element : records) {
    const DictionaryRef record = element.dictionary();
    addIdentifier(record[kAccountIdentifier], identifiers);
    for (const Value& child : record[kAccountChildAccounts].array()) {
      addIdentifier(child.dictionary()[kAccountIdentifier], identifiers);
    }
  }
  return identifiers;
}

/// What an earlier release left on the device.
class DrawnDevice {
 public:
  explicit DrawnDevice(Drawn& drawn) : _drawn(drawn) {
    if (!drawn.oneIn(4)) _device.silence();
    if (!drawn.oneIn(8))
      _device.put(_device.accountsPath(), drawnFile(drawn, drawnAccountsFile(drawn)));
    if (drawn.oneIn(2)) putLegacyFile(mailPath(), kMailForm);
    if (drawn.oneIn(2)) putLegacyFile(exchangePath(), kExchangeForm);
    if (drawn.oneIn(16)) _device.put(sentinelPath(), "");
    if (drawn.oneIn(16)) _device.put(mailPath() + ".original", "");
    tellFacts();
  }

  std::string mailPath() const { return _device.home() + "/Library/Mail/Accounts.plist"; }
  std::string exchangePath() const { return preferences() + "/com.orvane.Syncora.plist"; }

  /// Both legacy files are then removed without a look into them.
  bool isRemovalInterrupted() const { return _device.at(sentinelPath()).has_value(); }

  /// Of each legacy file that is gone, the accounts stand in the accounts file, or the migration
  /// has said why not.
  void checkNoneIsLost(const Listener& listener) const {
    const Identifiers present =
        identifiersInAccountsFile(_device.at(_device.accountsPath()).value_or(""));
    for (const auto& [path, file] : _legacyFiles) {
      if (_device.at(path)) continue;
      for (const String& identifier : file.identifiers) {
        check(present.contains(identifier) || listener.heardOf(identifier),
              "no account of a legacy file is lost: " + identifier.str());
      }
    }
  }

  /// One of which an account cannot be converted is left as it is; every other one goes.
  bool isLegacyFileLeft() const {
    bool isAnyLeft = false;
    for (const auto& [path, file] : _legacyFiles) {
      const auto there = _device.at(path);
      check(!there || *there == file.bytes, "a legacy file is removed or left as it is");
      isAnyLeft |= there.has_value();
    }
    return isAnyLeft;
  }

 private:
  struct LegacyFile {
    std::string bytes;
    Identifiers identifiers;
  };

  std::string preferences() const { return _device.home() + "/Library/Preferences"; }
  std::string sentinelPath() const { return preferences() + "/.removingOldAccounts"; }

  void putLegacyFile(const std::string& path, const LegacyForm& form) {
    const DictionaryRef file = Dictionary::make();
    for (const char* list : form.lists) {
      if (!_drawn.oneIn(8)) file->set(list, drawnRecords(_drawn));
    }
    if (_drawn.oneIn(16)) file->set(form.lists.front(), drawnValue(_drawn));
    LegacyFile& put = _legacyFiles[path];
    put.bytes = drawnFile(_drawn, file);
    put.identifiers = identifiersIn(put.bytes, form);
    _device.put(path, put.bytes);
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
  std::map<std::string, LegacyFile> _legacyFiles;  ///< by path
};

Value accountsOfFile() {
  const ArrayRef accounts = Array::make();
  const auto store = AccountsManager::init();
  for (const auto& account : *store->allBasicAccounts()) {
    accounts->append(account->properties()->frozenCopy());
  }
  return accounts;
}

bool migrate(MigrationObserver* observer = nullptr) {
  AccountsDataMigrator migrator;
  migrator.setObserver(observer);
  return migrator.performMigration();
}

}  // namespace

void tryInput(std::string_view input) {
  Drawn drawn(input);
  const DrawnDevice device(drawn);
  const bool isBlind = device.isRemovalInterrupted();
  Listener listener;
  check(migrate(&listener), "a device is migrated");
  if (!isBlind) device.checkNoneIsLost(listener);
  // The first one may only have finished the removal at which another was interrupted.
  if (AccountsDataMigrator().isNeeded()) check(migrate(), "a device is migrated after a removal");
  check(AccountsDataMigrator().isNeeded() == device.isLegacyFileLeft(),
        "nothing else is left to do");

  const Value migrated = accountsOfFile();
  check(migrate(), "a migrated device is migrated");
  check(accountsOfFile() == migrated, "a second migration changes no account");
}

}  // namespace tallbook::fuzz
