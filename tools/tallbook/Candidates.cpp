// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/Candidates.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "tallbook/AccountsManager.h"
#include "tallbook/DataclassNames.h"
#include "tallbook/RecordKeys.h"

#include "tools/common/AccountsFile.h"
#include "tools/common/Nearest.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

using Candidates = std::vector<Candidate>;

// Not `storeToRead`, which tells about a file that is not there.
std::shared_ptr<AccountsManager> store() {
  return AccountsManager::initWithAccountsFile(readAccountsFile());
}

std::shared_ptr<BasicAccount> recordOf(const PartialCommandLine& line) {
  return recordNamed(*store(), line.valueOf("ID"));
}

/// How often each name is used, and which identifiers begin with it: a name that is neither another
/// account's nor the beginning of an identifier is enough to find its account by.
class Names {
 public:
  explicit Names(const std::vector<NamedRecord>& records) {
    _identifiers.reserve(records.size());
    for (const NamedRecord& each : records) {
      ++_uses[inSmallLetters(each.name)];
      _identifiers.push_back(inSmallLetters(each.identifier));
    }
    std::ranges::sort(_identifiers);
  }
  bool isEnough(const std::string& name) const {
    const std::string small = inSmallLetters(name);
    const auto next = std::ranges::lower_bound(_identifiers, small);
    return !name.empty() && _uses.at(small) == 1 &&
           (next == _identifiers.end() || !next->starts_with(small));
  }

 private:
  // Only those of ASCII, as accounts are found.
  static std::string inSmallLetters(std::string text) {
    for (char& each : text) {
      if (each >= 'A' && each <= 'Z') each = static_cast<char>(each - 'A' + 'a');
    }
    return text;
  }

  std::unordered_map<std::string, int> _uses;
  std::vector<std::string> _identifiers;
};

/// Each account by its name, where that is enough, else by its identifier; by that as well where
/// the word begins so.
Candidates accounts(const PartialCommandLine& line) {
  const std::vector<NamedRecord> records = namedRecords(*store());
  const Names names(records);
  Candidates candidates;
  candidates.reserve(2 * records.size());
  for (const NamedRecord& each : records) {
    const std::string type = each.record->type().str();
    const bool isByName = names.isEnough(each.name);
    if (isByName) candidates.push_back({each.name, type + ", " + shortened(each.identifier)});
    if (storedIdentifier(*each.record).empty()) continue;
    if (!isByName || (!line.word.empty() && beginsWith(each.identifier, line.word))) {
      candidates.push_back(
          {each.identifier, shortened(each.record->nameForPeople()) + ", " + type});
    }
  }
  return candidates;
}

/// The account's own keys, then those with a meaning that it lacks.
Candidates keys(const PartialCommandLine& line) {
  const DictionaryRef own = recordOf(line)->properties();
  Candidates candidates;
  for (const auto& [key, value] : *own) {
    candidates.push_back({key.str(), std::string(nameOfKind(value.kind()))});
  }
  for (const auto& [key, kind] : kindsOfKeys()) {
    const std::string_view name = kind == Value::Kind::Null ? "any kind" : nameOfKind(kind);
    if (!own->contains(key)) candidates.push_back({key.str(), std::string(name) + ", not set"});
  }
  return candidates;
}

Candidates dataclasses(const PartialCommandLine& line) {
  const auto record = recordOf(line);
  const ArrayRef enabled = record->enabledDataclasses();
  Candidates candidates;
  if (const ArrayRef supported = record->supportedDataclasses()) {
    candidates.reserve(supported->size());
    for (const Value& each : *supported) {
      const String dataclass = each.string();
      const bool isOn = enabled && enabled->contains(each);
      candidates.push_back({shortNameOfDataclass(dataclass), isOn ? "on" : "off"});
    }
  }
  return candidates;
}

Candidates types(const PartialCommandLine& /*line*/) {
  Candidates candidates;
  for (const String& type : BasicAccount::allAccountTypes()) {
    candidates.push_back({type.str(), shortNamesOfDataclasses(
                                          BasicAccount::supportedDataclassesForAccountType(type))});
  }
  return candidates;
}

Candidates classes(const PartialCommandLine& line) {
  Candidates candidates;
  if (const ArrayRef usual = BasicAccount::accountClassesForAccountType(line.valueOf("TYPE"))) {
    for (const Value& each : *usual) candidates.push_back({each.string().str(), ""});
  }
  return candidates;
}

Candidates kinds(const PartialCommandLine& /*line*/) {
  Candidates candidates;
  for (const std::string& kind : writableKinds()) candidates.push_back({kind, ""});
  return candidates;
}

Candidates generations(const PartialCommandLine& /*line*/) {
  Candidates candidates;
  for (const AccountsGeneration& each : tool::generations()) {
    candidates.push_back({each.name, "kept " + localTimeText(each.kept)});
  }
  return candidates;
}

Candidates files(const PartialCommandLine& /*line*/) {
  return {{"", "files"}};
}

Candidates folders(const PartialCommandLine& /*line*/) {
  return {{"", "folders"}};
}

Candidates generationsAndFiles(const PartialCommandLine& line) {
  Candidates candidates = files(line);
  std::ranges::copy(generations(line), std::back_inserter(candidates));
  return candidates;
}

struct Known {
  std::string_view name;
  Candidates (*candidates)(const PartialCommandLine& line);
};

/// By what stands for the argument in the help.
constexpr std::array kKnown{
    Known{"ID", accounts},
    Known{"KEY", keys},
    Known{"DATACLASS", dataclasses},
    Known{"TYPE", types},
    Known{"CLASS", classes},
    Known{"KIND", kinds},
    Known{"GENERATION", generations},
    Known{"A", generationsAndFiles},
    Known{"B", generationsAndFiles},
    Known{"FILE", files},
    Known{"DIR", folders},
};

}  // namespace

std::vector<Candidate> candidatesForArgument(const PartialCommandLine& line) {
  const auto* const known = std::ranges::find(kKnown, nameOfValue(*line.argument), &Known::name);
  return known == kKnown.end() ? Candidates() : known->candidates(line);
}

}  // namespace tallbook::tool
