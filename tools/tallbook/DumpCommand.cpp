#include <iostream>

#include "tools/common/AccountsFile.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/XMLText.h"

namespace tallbook::tool {

ExitCode dump(const Options& options) {
  const AccountsFile file = readAccountsFile();
  if (file.state.kind == AccountsFileState::Kind::Missing) {
    throw Failure(ExitCode::NotFound, "there is no " + file.path + " yet");
  }
  if (file.isUnusable()) throw unusable(file, "restore it from a copy");
  requirePrintable(file);
  if (options.json) {
    printJSON(jsonFromValue(file.topLevel));
    return ExitCode::Done;
  }
  const XMLText xml = xmlPropertyList(file.topLevel);
  std::cout << shown(xml.text);
  if (xml.hasShortenedDates) {
    note("dates are printed without their fractions of a second; --json keeps them");
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
