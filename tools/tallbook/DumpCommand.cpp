// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <iostream>

#include "tallbook/PropertyList.h"

#include "tools/common/AccountsFile.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/JSONValue.h"

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
  std::string problem;
  const auto xml = xmlPropertyList(file.topLevel, &problem);
  if (!xml) {
    throw Failure(ExitCode::NotFound, "XML cannot carry the file: " + problem +
                                          "; \"tallbook --json dump\" prints everything");
  }
  std::cout << shown(xml->text);
  if (xml->hasShortenedDates) {
    note("dates are printed without their fractions of a second; --json keeps them");
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
