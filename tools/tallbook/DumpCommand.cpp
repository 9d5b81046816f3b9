#include <iostream>

#include "tools/common/AccountsFile.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/XMLText.h"

namespace tallbook::tool {

ExitCode dump(const Options& options) {
  const AccountsFile file = readAccountsFile();
  if (file.state == AccountsFile::State::Missing) {
    throw Failure(ExitCode::NotFound, "there is no " + file.path + " yet");
  }
  if (file.state == AccountsFile::State::Unreadable) {
    throw unreadable(file, "restore it from a copy");
  }
  requirePrintable(file);
  if (options.json) {
    printJSON(jsonFromValue(file.content));
    return ExitCode::Done;
  }
  const XMLText xml = xmlPropertyList(file.content);
  std::cout << xml.text;
  if (xml.hasShortenedDates) {
    note("dates are printed without their fractions of a second; --json keeps them");
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
