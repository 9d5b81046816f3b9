#pragma once

#include "tools/tallbook/EditableStore.h"

namespace tallbook::tool {

/// Gives the record the keys and values of `wanted`, and no others. Throws Failure for another
/// "Identifier" or "Type", and where the next load would drop the account.
void takeRecord(const EditableStore& store, const std::shared_ptr<BasicAccount>& record,
                const DictionaryRef& wanted);

/// Gives the store's accounts the keys and values, children included, of those in the list with
/// their identifiers, and adds the others. Accounts that the list lacks stay, or with `prune` go.
///
/// Those that the file holds just as they are wanted need nothing, not even an identifier. Throws
/// Failure, and leaves a store that is not to be saved, for all others that cannot be had, and for
/// no list, which is hardly meant as an empty one.
void takeAccounts(const EditableStore& store, const ArrayRef& wanted, bool prune);

/// The store's accounts as they are now, as the top level of an accounts file; frozen.
DictionaryRef accountsOf(const EditableStore& store);
/// Prints what differs from `before`, which `accountsOf` gave, and saves where anything does. What
/// it replaces is kept as a generation of its own, so that `undo` takes back just this.
void showAndSave(const Options& options, const EditableStore& store, const DictionaryRef& before);

}  // namespace tallbook::tool
