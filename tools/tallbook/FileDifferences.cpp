#include "tools/tallbook/FileDifferences.h"

#include <iostream>
#include <map>

#include "tallbook/Vocabulary.h"

#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

/// Finds a record again in another file: its identifier, and which one of those with it.
using Identity = std::pair<std::string, std::size_t>;

struct Records {
  explicit Records(const Value& list) {
    const ArrayRef array = list.array();
    if (!array) return;
    std::map<std::string, std::size_t> seen;
    for (const Value& element : *array) {
      const DictionaryRef record = element.dictionary();
      if (!record) continue;
      const std::string identifier = (*record)[kAccountIdentifier].string().str();
      const Identity identity(identifier, seen[identifier]++);
      order.push_back(identity);
      byIdentity.emplace(identity, record);
    }
  }

  std::vector<Identity> order;
  std::map<Identity, DictionaryRef> byIdentity;
};

std::string labelOf(const Dictionary& record, const Identity& identity) {
  std::string label = shortened(record[kAccountType].string().str());
  if (label.empty()) label = "record";
  label += identity.first.empty() ? " without identifier" : " " + shortened(identity.first);
  if (identity.second > 0) label += " (" + std::to_string(identity.second + 1) + ")";
  if (const String name = record[kAccountDisplayName].string(); !name.empty()) {
    label += " \"" + shortened(name.str()) + "\"";
  }
  return label;
}

/// Collects what differs. The values belong to the two files.
class Comparison {
 public:
  void compareFiles(const Dictionary& before, const Dictionary& after) {
    addKeys(Style::Changed, "file", &before, &after, kPlistAccountsKey);
    compareRecords("", before[kPlistAccountsKey], after[kPlistAccountsKey]);
  }

  std::vector<RecordChange> changes() && { return std::move(_changes); }

 private:
  void compareRecords(const std::string& above, const Value& listBefore, const Value& listAfter) {
    const Records before(listBefore);
    const Records after(listAfter);
    std::vector<Identity> keptBefore;
    std::vector<Identity> keptAfter;
    for (const Identity& identity : before.order) {
      const auto now = after.byIdentity.find(identity);
      const bool isKept = now != after.byIdentity.end();
      if (isKept) keptBefore.push_back(identity);
      compareRecord(above, identity, before.byIdentity.at(identity).get(),
                    isKept ? now->second.get() : nullptr);
    }
    for (const Identity& identity : after.order) {
      if (before.byIdentity.contains(identity)) {
        keptAfter.push_back(identity);
      } else {
        compareRecord(above, identity, nullptr, after.byIdentity.at(identity).get());
      }
    }
    if (keptBefore != keptAfter) {
      _changes.push_back({Style::Changed, above + "order of the records", {}});
    }
  }

  void compareRecord(const std::string& above, const Identity& identity, const Dictionary* before,
                     const Dictionary* after) {
    const std::string label = above + labelOf(after ? *after : *before, identity);
    const Style style = !before ? Style::Added : !after ? Style::Removed : Style::Changed;
    addKeys(style, label, before, after, kAccountChildAccounts);
    static const Value kNothing;
    compareRecords(label + " > ", before ? (*before)[kAccountChildAccounts] : kNothing,
                   after ? (*after)[kAccountChildAccounts] : kNothing);
  }

  /// The key `apart` holds records of its own: it counts here only where it is no list of them.
  void addKeys(Style style, const std::string& label, const Dictionary* before,
               const Dictionary* after, std::string_view apart) {
    RecordChange change{style, label, {}};
    const auto isApart = [&](std::string_view key, const Value* a, const Value* b) {
      const auto isList = [](const Value* value) {
        return !value || value->kind() == Value::Kind::Array;
      };
      return key == apart && isList(a) && isList(b);
    };
    if (before) {
      for (const auto& [key, value] : *before) {
        const Value* now = after ? after->find(key) : nullptr;
        if (isApart(key, &value, now) || (now && *now == value)) continue;
        change.keys.push_back({key.str(), &value, now});
      }
    }
    if (after) {
      for (const auto& [key, value] : *after) {
        if ((before && before->contains(key)) || isApart(key, nullptr, &value)) continue;
        change.keys.push_back({key.str(), nullptr, &value});
      }
    }
    if (style != Style::Changed || !change.keys.empty()) _changes.push_back(std::move(change));
  }

  std::vector<RecordChange> _changes;
};

std::string_view nameOfStyle(Style style) {
  return style == Style::Added ? "added" : style == Style::Removed ? "removed" : "changed";
}

JSON jsonFromChange(const RecordChange& change) {
  JSON object = JSON::object();
  object["change"] = nameOfStyle(change.style);
  object["record"] = change.label;
  object["keys"] = JSON::object();
  for (const auto& [name, before, after] : change.keys) {
    JSON sides = JSON::object();
    if (before) sides["before"] = jsonFromValue(*before);
    if (after) sides["after"] = jsonFromValue(*after);
    object["keys"][name] = std::move(sides);
  }
  return object;
}

char signOf(Style style) {
  return style == Style::Added ? '+' : style == Style::Removed ? '-' : '~';
}

void print(const RecordChange& change) {
  std::cout << styled(change.style,
                      std::string(1, signOf(change.style)) + " " + printable(change.label))
            << '\n';
  for (const auto& [name, before, after] : change.keys) {
    const Style style = !before ? Style::Added : !after ? Style::Removed : Style::Changed;
    std::string line = "    " + std::string(1, signOf(style)) + " " + printable(name) + ": ";
    if (before) line += lineText(*before);
    if (before && after) line += " -> ";
    if (after) line += lineText(*after);
    std::cout << styled(style, line) << '\n';
  }
}

}  // namespace

std::vector<RecordChange> differencesBetween(const Dictionary& before, const Dictionary& after) {
  Comparison comparison;
  comparison.compareFiles(before, after);
  return std::move(comparison).changes();
}

void printDifferences(const std::vector<RecordChange>& changes) {
  for (const RecordChange& change : changes) print(change);
}

JSON jsonFromDifferences(const std::vector<RecordChange>& changes) {
  JSON array = JSON::array();
  for (const RecordChange& change : changes) array.push_back(jsonFromChange(change));
  return array;
}

std::string summaryOfDifferences(const std::vector<RecordChange>& changes) {
  std::string summary;
  for (const RecordChange& change : changes) {
    if (!summary.empty()) summary += "; ";
    summary += std::string(1, signOf(change.style)) + " " + change.label;
    if (change.style != Style::Changed) continue;
    const char* separator = ": ";
    for (const RecordChange::Key& key : change.keys) {
      summary += separator + shortened(key.name);
      separator = ", ";
    }
  }
  return summary.empty() ? "nothing" : summary;
}

}  // namespace tallbook::tool
