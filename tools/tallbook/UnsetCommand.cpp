#include "tallbook/Vocabulary.h"

#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/RecordKeys.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {

ExitCode unset(const Options& options, const std::string& identifier, const std::string& key) {
  requireChangeable(key);
  if (key == kAccountClass.view()) {
    throw Failure(ExitCode::Usage,
                  "an account without \"Class\" is dropped at the next load; set "
                  "it to another class instead");
  }
  const EditableStore store(options);
  const auto record = recordNamed(*store, identifier);
  if (!record->properties()->contains(key)) {
    throw Failure(ExitCode::NotFound, "the account has no \"" + key + "\" of its own");
  }
  record->removeAccountPropertyForKey(key);
  store.take(record);
  store.save();
  return ExitCode::Done;
}

}  // namespace tallbook::tool
