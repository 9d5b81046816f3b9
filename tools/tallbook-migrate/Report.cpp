// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook-migrate/Report.h"

#include <array>
#include <iostream>
#include <map>

#include "tools/common/Table.h"

namespace tallbook::migrate {
namespace {

using Place = AccountStory::Place;
using tool::Fit;
using tool::JSON;
using tool::Style;
using tool::Table;

std::string_view nameOf(Place place) {
  switch (place) {
    case Place::InFile:
      return "in the file";
    case Place::InFileAsBefore:
      return "in the file as before";
    case Place::Unloadable:
      return "in the file, unusable";
    case Place::NotSaved:
      return "not saved";
    case Place::InLegacyFile:
      return "in the legacy file";
    case Place::Gone:
      return "gone";
    case Place::Unexplained:
      return "GONE, NO REASON TOLD";
  }
  return "";
}

std::string_view nameOf(LegacyFileEnd::Kind kind) {
  static constexpr std::array<std::string_view, 3> kNames = {"removed", "moved aside", "kept"};
  return kNames.at(static_cast<std::size_t>(kind));
}

Style styleOf(const AccountStory& account) {
  if (!account.isIn(Place::InFile)) return Style::Removed;
  return account.steps.empty() ? Style::Plain : Style::Changed;
}

std::string identifierOf(const AccountStory& account, const ReportOptions& options) {
  if (account.identifier.empty()) return "(none)";
  return account.isIdentifierNew && options.hidesNewIdentifiers ? "(new)" : account.identifier;
}

/// "~/Library/Mail/Accounts.plist", whatever device or copy of one it is in.
std::string belowHome(const std::string& path) {
  const auto library = path.rfind("/Library/");
  return tool::printable(library == std::string::npos ? path : "~" + path.substr(library));
}

std::string textOf(const AccountStory& account, const std::string& ofLoading) {
  std::string text = account.why;
  for (const auto& [stage, what] : account.steps) {
    text += (text.empty() ? "" : "; ") + stage + ": ";
    for (std::size_t index = 0; index < what.size(); ++index) {
      text += (index == 0 ? "" : ", ") + what[index];
    }
  }
  if (!text.empty()) return text;
  return account.from == ofLoading ? "unchanged" : "new";
}

/// How many accounts there are of each kind, in the order in which they are told.
class Totals {
 public:
  void count(const std::vector<AccountStory>& accounts, const std::string& ofLoading) {
    for (const AccountStory& account : accounts) {
      ++_all;
      if (account.isIn(Place::InFile)) {
        ++_inFile;
        ++_of[account.from != ofLoading ? "new" : account.steps.empty() ? "unchanged" : "changed"];
      } else {
        ++_elsewhere[account.place];
      }
      count(account.children, ofLoading);
    }
  }

  std::string text() const {
    std::string text = std::to_string(_all) + (_all == 1 ? " account: " : " accounts: ") +
                       std::to_string(_inFile) + " in the file";
    std::string separator = " (";
    for (const auto& [kind, number] : _of) {
      text += separator + std::to_string(number) + " " + kind;
      separator = ", ";
    }
    if (!_of.empty()) text += ")";
    for (const auto& [place, number] : _elsewhere) {
      text += ", " + std::to_string(number) + " " + std::string(nameOf(place));
    }
    return text;
  }

  JSON json() const {
    JSON totals = {{"all", _all}, {"in the file", _inFile}};
    for (const auto& [kind, number] : _of) totals[kind] = number;
    for (const auto& [place, number] : _elsewhere) totals[std::string(nameOf(place))] = number;
    return totals;
  }

  bool hasUnexplained() const { return _elsewhere.contains(Place::Unexplained); }

 private:
  std::size_t _all = 0;
  std::size_t _inFile = 0;
  std::map<std::string, std::size_t> _of;
  std::map<Place, std::size_t> _elsewhere;
};

JSON jsonOf(const std::vector<AccountStory>& accounts, const ReportOptions& options) {
  JSON list = JSON::array();
  for (const AccountStory& account : accounts) {
    JSON object = {{"name", account.name},
                   {"type", account.type},
                   {"identifier", identifierOf(account, options)},
                   {"from", account.from},
                   {"now", nameOf(account.place)},
                   {"why", account.why},
                   {"steps", JSON::array()},
                   {"children", jsonOf(account.children, options)}};
    for (const auto& [stage, what] : account.steps) {
      object["steps"].push_back({{"step", stage}, {"what", what}});
    }
    list.push_back(std::move(object));
  }
  return list;
}

JSON jsonOf(const std::vector<LegacyFileEnd>& files) {
  JSON list = JSON::array();
  for (const auto& [path, kind, why, movedTo] : files) {
    list.push_back({{"path", belowHome(path)},
                    {"end", nameOf(kind)},
                    {"why", why},
                    {"movedTo", movedTo.empty() ? "" : belowHome(movedTo)}});
  }
  return list;
}

void addRows(Table& table, const std::vector<AccountStory>& accounts, const std::string& ofLoading,
             const ReportOptions& options, std::size_t depth = 0) {
  for (const AccountStory& account : accounts) {
    table.add({account.name, account.type, identifierOf(account, options), account.from,
               std::string(nameOf(account.place)), textOf(account, ofLoading)},
              depth, styleOf(account));
    addRows(table, account.children, ofLoading, options, depth + 1);
  }
}

}  // namespace

bool printStory(const Story& story, const ReportOptions& options) {
  const std::vector<AccountStory> accounts = story.accounts();
  Totals totals;
  totals.count(accounts, story.nameOfLoading());
  if (options.isQuiet) return !totals.hasUnexplained();
  if (options.json) {
    tool::printJSON({{"accounts", jsonOf(accounts, options)},
                     {"legacyFiles", jsonOf(story.legacyFiles())},
                     {"totals", totals.json()}});
    return !totals.hasUnexplained();
  }
  if (!accounts.empty()) {
    Table table({{"NAME", Fit::Cut},
                 {"TYPE"},
                 {"IDENTIFIER", Fit::Middle},
                 {"FROM", Fit::Break},
                 {"NOW"},
                 {"WHAT HAPPENED", Fit::Break}});
    addRows(table, accounts, story.nameOfLoading(), options);
    table.print();
  }
  for (const auto& [path, kind, why, movedTo] : story.legacyFiles()) {
    std::cout << belowHome(path) << ": " << nameOf(kind)
              << (movedTo.empty() ? "" : " to " + belowHome(movedTo))
              << (why.empty() ? "" : ": " + tool::printable(why)) << '\n';
  }
  std::cout << totals.text() << '\n';
  return !totals.hasUnexplained();
}

}  // namespace tallbook::migrate
