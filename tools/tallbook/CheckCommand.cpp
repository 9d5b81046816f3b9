#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>

#include "tools/common/AccountsFile.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/CreatorsCheck.h"
#include "tools/tallbook/FileCheck.h"

namespace tallbook::tool {
namespace {

/// What saves left beside the accounts file.
std::vector<Finding> leftovers(const std::filesystem::path& file) {
  constexpr std::string_view kTemporary = ".tallbook-";
  const std::string kept = file.filename().string() + ".unreadable-";
  std::vector<Finding> findings;
  std::error_code unseen;
  for (const auto& entry : std::filesystem::directory_iterator(file.parent_path(), unseen)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(kept)) {
      findings.push_back({"leftover", entry.path().string(),
                          "a save found it in place of the accounts file; restore from it what it "
                          "is needed for, and remove it"});
    } else if (name.size() == kTemporary.size() + 16 && name.starts_with(kTemporary) &&
               name.find_first_not_of("0123456789abcdef", kTemporary.size()) == name.npos) {
      findings.push_back({"leftover", entry.path().string(),
                          "a save was stopped before it was done; remove it when nobody saves"});
    }
  }
  std::ranges::sort(findings, {}, &Finding::place);
  return findings;
}

Style styleOf(std::string_view effect) {
  if (effect == "dropped" || effect == "broken") return Style::Removed;
  return effect == "fit" ? Style::Added : effect == "leftover" ? Style::Plain : Style::Changed;
}

}  // namespace

ExitCode check(const Options& options, bool withModules) {
  const AccountsFile file = readAccountsFile();
  if (file.isUnusable()) {
    throw unusable(file,
                   "every program reads it as empty, and the first to save puts another in its "
                   "place; restore it from a copy");
  }
  requirePrintable(file);
  noteMissing(file);
  std::vector<Finding> findings =
      file.topLevel ? findingsOf(*file.topLevel) : std::vector<Finding>();
  std::ranges::move(findingsOfCreators(), std::back_inserter(findings));
  if (withModules) std::ranges::move(findingsOfModules(), std::back_inserter(findings));
  std::ranges::move(leftovers(file.path), std::back_inserter(findings));
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
