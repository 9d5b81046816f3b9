#pragma once

#include <memory>

#include "tallbook/AccountsManager.h"

#include "tools/common/AccountsFile.h"
#include "tools/tallbook/Commands.h"

namespace tallbook::tool {

/// The device's accounts, to be changed and saved. Refuses to stand in for a file that could not be
/// read, unless told to; then keeps a copy of that file before it is replaced.
class EditableStore {
 public:
  /// Throws Failure for a file that is none and may not be replaced.
  explicit EditableStore(const Options& options);

  AccountsManager& operator*() const { return *_store; }
  AccountsManager* operator->() const { return _store.get(); }
  /// Makes a change of a record's properties part of the store: a child is written as part of its
  /// parent, and the children of a top-level record are found through the store's index.
  void take(const std::shared_ptr<BasicAccount>& record) const;
  /// Throws Failure where the file was not replaced.
  void save() const;

 private:
  AccountsFile _file;
  std::shared_ptr<AccountsManager> _store;
};

/// Throws Failure for a top-level record that the next load would drop.
void requireLoadable(const DictionaryRef& properties);

}  // namespace tallbook::tool
