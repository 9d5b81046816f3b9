// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <iostream>
#include <iterator>

#include "tallbook/LeftoverFiles.h"

#include "tools/common/AccountsFile.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/CreatorsCheck.h"

namespace tallbook::tool {
namespace {

Style styleOf(std::string_view effect) {
  if (effect == "dropped" || effect == "broken") return Style::Removed;
  return effect == "fit" ? Style::Added : effect == "leftover" ? Style::Plain : Style::Changed;
}

}  // namespace

ExitCode check(const Options& options) {
  const AccountsFile file = readAccountsFile();
  if (file.isUnusable()) {
    throw unusable(file,
                   "every program reads it as empty, and the first to save puts another in its "
                   "place; restore it from a copy");
  }
  requirePrintable(file);
  noteMissing(file);
  std::vector<Finding> findings =
      file.topLevel ? findingsInAccountsFile(*file.topLevel) : std::vector<Finding>();
  std::ranges::move(findingsInCreators(), std::back_inserter(findings));
  if (options.modules) std::ranges::move(findingsOfModules(), std::back_inserter(findings));
  for (const LeftoverFile& left : leftoverFiles()) {
    findings.push_back({"leftover", left.path, left.why});
  }
  if (options.json) {
    JSON array = JSON::array();
    for (const Finding& finding : findings) {
      array.push_back({{"effect", finding.effect}, {"place", finding.place}, {"why", finding.why}});
    }
    printJSON(array);
  } else {
    for (const Finding& finding : findings) {
      std::cout << styled(styleOf(finding.effect), std::string(finding.effect)) << ": "
                << printable(finding.place) << ": " << printable(finding.why) << '\n';
    }
  }
  const bool isSound = std::ranges::all_of(findings, [](const Finding& finding) {
    return finding.effect == "fit" || finding.effect == "leftover";
  });
  return isSound ? ExitCode::Done : ExitCode::NotFound;
}

}  // namespace tallbook::tool
