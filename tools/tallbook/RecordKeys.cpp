#include "tools/tallbook/RecordKeys.h"

#include "tallbook/Vocabulary.h"

#include "tools/common/Nearest.h"
#include "tools/common/Outcome.h"

namespace tallbook::tool {

const std::vector<std::pair<String, Value::Kind>>& kindsOfKeys() {
  using Kind = Value::Kind;
  static const std::vector<std::pair<String, Kind>> kinds{
      {kAccountIdentifier, Kind::String},
      {kAccountSyncIdentifier, Kind::String},
      {kAccountType, Kind::String},
      {kAccountClass, Kind::String},
      {kAccountDisplayName, Kind::String},
      {kAccountUsername, Kind::String},
      {kAccountTypeString, Kind::String},
      {kAccountShortTypeString, Kind::String},
      {kAccountEnabledDataclasses, Kind::Array},
      {kAccountProvisionedDataclasses, Kind::Array},
      {kCalendarsAccountSubscribedCalendars, Kind::Array},
      {kAccountChildAccounts, Kind::Array},
      {kAccountPreventRecentsSyncing, Kind::Null},
      {kAccountCalendarsWereMigrated, Kind::Null},
  };
  return kinds;
}

Value::Kind kindOfKey(std::string_view key) {
  for (const auto& [known, kind] : kindsOfKeys()) {
    if (known == key) return kind;
  }
  return Value::Kind::Null;
}

void requireChangeable(const std::string& key) {
  if (key == kAccountType.view() || key == kAccountIdentifier.view()) {
    throw Failure(ExitCode::Usage, "\"" + key +
                                       "\" is what makes the record this one and cannot be "
                                       "changed; add another account and remove this one");
  }
}

void requireNoOtherCapitals(const std::string& key, const Dictionary& record) {
  if (record.contains(key)) return;
  std::string other;
  const auto compare = [&](const String& known) {
    if (isSameWord(known, key)) other = known.str();
  };
  for (const auto& [known, kind] : kindsOfKeys()) compare(known);
  for (const auto& [known, value] : record) compare(known);
  if (other.empty() || other == key) return;
  throw Failure(ExitCode::Usage, "\"" + key + "\" would be a new key, and differs from \"" + other +
                                     "\" in capitals alone; if it is meant, repeat the command "
                                     "with --new-key");
}

}  // namespace tallbook::tool
