#include "tools/tallbook/AccountsText.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/WantedAccounts.h"

namespace tallbook::tool {

ExitCode apply(const Options& options, const std::string& path, bool prune) {
  const AccountsFile wanted = readAccountsText(path);
  if (wanted.state.kind == AccountsFileState::Kind::Missing) {
    throw Failure(ExitCode::NotFound, "there is no " + wanted.path);
  }
  if (wanted.isUnusable()) {
    throw unusable(wanted,
                   "give accounts as \"tallbook dump\" or \"tallbook --json dump\" prints them");
  }
  requirePrintable(wanted);
  requireNoUpgradeAhead(wanted, options);
  const EditableStore store(options);
  requirePrintable(store.file());
  const DictionaryRef before = accountsOf(store);
  takeAccounts(store, wanted.records(), prune);
  showAndSave(options, store, before);
  return ExitCode::Done;
}

}  // namespace tallbook::tool
