#pragma once

#include <memory>

#include "tallbook/AccountsManager.h"
#include "tallbook/InternalConsistencyFailure.h"

#include "tools/common/AccountsFile.h"
#include "tools/tallbook/Commands.h"

namespace tallbook::tool {

/// The device's accounts, to be changed and saved. Stands in for no file that could not be read,
/// and for one that is no accounts file only when told to: the save keeps that one beside the new
/// file.
class EditableStore {
 public:
  /// Throws Failure for such a file, and for one of an older version whose upgrade is not given up.
  explicit EditableStore(const Options& options);
  /// Another store of the same file as it was then, without what was changed in this one. Waits
  /// for a migration as the first one did.
  EditableStore again(const Options& options) const;

  /// The accounts file that the store was made of.
  const AccountsFile& file() const { return _file; }
  AccountsManager& operator*() const { return *_store; }
  AccountsManager* operator->() const { return _store.get(); }
  /// Makes a change of a record's properties part of the store: a child is written as part of its
  /// parent, and the children of a top-level record are found through the store's index.
  void take(const std::shared_ptr<BasicAccount>& record) const;
  /// Names what clashed with changes of others. Throws Failure where the file was not replaced.
  void save(AccountsManager::KeepGeneration keep =
                AccountsManager::KeepGeneration::AtMostOnceAMinute) const;

 private:
  AccountsFile _file;
  std::shared_ptr<AccountsManager> _store;
};

/// Throws Failure for a file of an older version, unless the options give its upgrade up: saving it
/// makes it read as current.
void requireNoUpgradeAhead(const AccountsFile& file, const Options& options);
/// Says that a change is saved although not everyone who listens could be told of it.
void noteUntold(const InternalConsistencyFailure& failure);
/// Throws Failure for a second account of the type of which a device has one.
void requireRoomFor(const String& type, const AccountsManager& store);
/// Throws Failure for a top-level record that the next load would drop.
void requireLoadable(const DictionaryRef& properties);

}  // namespace tallbook::tool
