// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {
namespace {

/// Whether the record's own list turns the dataclass on.
bool isStoredAsEnabled(const BasicAccount& record, const String& dataclass) {
  const ArrayRef enabled = (*record.properties())[kAccountEnabledDataclasses].array();
  return enabled && enabled->contains(dataclass.view());
}

ExitCode setEnabled(const Options& options, bool enabled) {
  const String full = requireDataclass(options.dataclass);
  const EditableStore store(options);
  const auto record = recordNamed(*store, options.account);
  const bool isSupported = record->supportedDataclasses()->contains(full.view());
  if (!isSupported && enabled) {
    throw Failure(ExitCode::Usage, record->explanationForDataclass(full).text);
  }
  if (isStoredAsEnabled(*record, full) != enabled) {
    AccountsManager::accountWillChangeForDataclass(record, full);
    // One that the type does not support may still be stored, by an older system: it can be
    // turned off.
    record->_forcedSetEnabledForDataclass(enabled, full);
    store->takeUpChangesOfAccount(record);
    store.save();
    try {
      AccountsManager::accountDidChangeForDataclass(record, full);
    } catch (const InternalConsistencyFailure& failure) {
      noteUntold(failure);
    }
  }
  const DataclassExplanation now = record->explanationForDataclass(full);
  if (now.isOn != enabled) {
    note(std::string("it is stored, but ") + (enabled ? "stays off" : "stays on") + ": " +
         now.text);
  }
  return ExitCode::Done;
}

}  // namespace

ExitCode enable(const Options& options) {
  return setEnabled(options, true);
}

ExitCode disable(const Options& options) {
  return setEnabled(options, false);
}

}  // namespace tallbook::tool
