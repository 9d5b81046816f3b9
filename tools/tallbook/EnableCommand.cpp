#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/Dataclasses.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/Explanation.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {
namespace {

/// Whether the record's own list turns the dataclass on.
bool isStoredAsEnabled(const BasicAccount& record, const String& dataclass) {
  const ArrayRef enabled = (*record.properties())[kAccountEnabledDataclasses].array();
  return enabled && enabled->contains(dataclass.view());
}

}  // namespace

ExitCode setEnabled(const Options& options, const std::string& identifier,
                    const std::string& dataclass, bool enabled) {
  const String full = dataclassNamed(dataclass);
  const EditableStore store(options);
  const auto record = recordNamed(*store, identifier);
  const bool isSupported = record->supportedDataclasses()->contains(full.view());
  if (!isSupported && enabled) {
    throw Failure(ExitCode::Usage, explanation(*record, full).text);
  }
  if (isStoredAsEnabled(*record, full) != enabled) {
    AccountsManager::accountWillChangeForDataclass(record, full);
    // One that the type does not support may still be stored, by an older system: it can be
    // turned off.
    record->_forcedSetEnabledForDataclass(enabled, full);
    store.take(record);
    store.save();
    try {
      AccountsManager::accountDidChangeForDataclass(record, full);
    } catch (const InternalConsistencyFailure& failure) {
      noteUntold(failure);
    }
  }
  const Explanation now = explanation(*record, full);
  if (now.isOn != enabled) {
    note(std::string("it is stored, but ") + (enabled ? "stays off" : "stays on") + ": " +
         now.text);
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
