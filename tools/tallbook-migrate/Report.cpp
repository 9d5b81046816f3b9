#include "tools/tallbook-migrate/Report.h"

#include "tools/common/Output.h"
#include "tools/common/Table.h"

namespace tallbook::migrate {
namespace {

using tool::JSON;
using tool::Style;
using tool::Table;

std::string identifierOf(const Fate& fate, const ReportOptions& options) {
  if (fate.identifier.empty()) return "(none)";
  return fate.isIdentifierNew && options.hidesNewIdentifiers ? "(new)" : fate.identifier;
}

Style styleOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::Unchanged:
      return Style::Plain;
    case Outcome::Converted:
    case Outcome::Added:
      return Style::Added;
    case Outcome::Dropped:
    case Outcome::NotConverted:
      return Style::Removed;
    default:
      return Style::Changed;
  }
}

JSON jsonOf(const Fate& fate, const ReportOptions& options) {
  JSON object = JSON::object();
  object["outcome"] = nameOf(fate.outcome);
  object["name"] = fate.name;
  object["type"] = fate.type;
  object["identifier"] = identifierOf(fate, options);
  object["why"] = fate.why;
  object["steps"] = JSON::array();
  for (const auto& [step, what] : fate.changes.steps) {
    object["steps"].push_back({{"step", step}, {"what", what}});
  }
  object["unexplained"] = fate.changes.unexplained;
  object["children"] = JSON::array();
  return object;
}

JSON jsonOf(const std::vector<Fate>& fates, const ReportOptions& options) {
  JSON families = JSON::array();
  std::vector<std::size_t> positions;
  positions.reserve(fates.size());
  for (const Fate& fate : fates) {
    JSON& siblings = fate.parent ? families[positions[*fate.parent]]["children"] : families;
    positions.push_back(siblings.size());
    siblings.push_back(jsonOf(fate, options));
  }
  return families;
}

}  // namespace

void printFates(const std::vector<Fate>& fates, const ReportOptions& options) {
  if (options.json) return tool::printJSON(jsonOf(fates, options));
  if (fates.empty()) return;
  Table table({"NAME", "TYPE", "IDENTIFIER", "OUTCOME", "HOW AND WHY"}, Table::Shape::Tree);
  std::vector<Table::Row> rows;
  rows.reserve(fates.size());
  for (const Fate& fate : fates) {
    rows.push_back(table.add({fate.name, fate.type, identifierOf(fate, options),
                              std::string(nameOf(fate.outcome)), fate.text()},
                             fate.parent ? rows[*fate.parent] : nullptr, styleOf(fate.outcome)));
  }
  table.print();
}

}  // namespace tallbook::migrate
