#include <iostream>

#include "tools/common/AccountsFile.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/FileCheck.h"

namespace tallbook::tool {

ExitCode check(const Options& options) {
  const AccountsFile file = readAccountsFile();
  if (file.isUnusable()) {
    throw unusable(file,
                   "every program reads it as empty, and the first to save puts another in its "
                   "place; restore it from a copy");
  }
  requirePrintable(file);
  noteMissing(file);
  const std::vector<Finding> findings =
      file.topLevel ? findingsOf(*file.topLevel) : std::vector<Finding>();
  if (options.json) {
    JSON array = JSON::array();
    for (const Finding& finding : findings) {
      array.push_back({{"effect", finding.effect}, {"place", finding.place}, {"why", finding.why}});
    }
    printJSON(array);
  } else {
    for (const Finding& finding : findings) {
      const Style style = finding.effect == "dropped" ? Style::Removed : Style::Changed;
      std::cout << styled(style, std::string(finding.effect)) << ": " << printable(finding.place)
                << ": " << printable(finding.why) << '\n';
    }
  }
  return findings.empty() ? ExitCode::Done : ExitCode::NotFound;
}

}  // namespace tallbook::tool
