#include "tools/tallbook-migrate/Entries.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "tallbook/Vocabulary.h"

namespace tallbook::migrate {
namespace {

using Renaming = std::pair<std::string_view, const String&>;

template <class Renamings>
void rename(Dictionary& record, const Renamings& renamings) {
  for (const auto& [oldKey, newKey] : renamings) {
    const Value* found = record.find(oldKey);
    if (!found) continue;
    const Value value = *found;
    record.remove(oldKey);
    record.set(newKey, value);
  }
}

void asMailRecord(Dictionary& record, Source source) {
  rename(record, std::array<Renaming, 3>{{{"AccountType", kAccountClass},
                                          {"AccountName", kAccountDisplayName},
                                          {"uniqueId", kAccountIdentifier}}});
  if (source == Source::LegacyOutgoing && !record.contains(kAccountClass)) {
    record.set(kAccountClass, "SMTPAccount");
  }
  if (isHostedClass(record[kAccountClass].stringView().value_or(""))) {
    const String username = record[kAccountUsername].string();
    const auto at = username.view().find('@');
    if (at != std::string_view::npos) record.set(kAccountUsername, username.view().substr(0, at));
  }
}

void asExchangeRecord(Dictionary& record) {
  rename(record,
         std::array<Renaming, 3>{{{"SyncoraAccountConfigurationClass", kAccountClass},
                                  {"SyncoraAccountDescription", kAccountDisplayName},
                                  {"SyncoraAccountConfigurationAccountID", kAccountIdentifier}}});
  const ArrayRef enabled = Array::make();
  for (const auto& [key, dataclass] : std::array<Renaming, 4>{
           {{"SyncoraAccountEnabledForCalendar", kAccountDataclassCalendars},
            {"SyncoraAccountEnabledForContacts", kAccountDataclassContacts},
            {"SyncoraAccountEnabledForEmail", kAccountDataclassMail},
            {"SyncoraAccountEnabledForContactsSearch", kAccountDataclassContactsSearch}}}) {
    const Value& setting = record[key];
    const bool isSwitch =
        setting.kind() == Value::Kind::Boolean || setting.kind() == Value::Kind::Integer;
    if (!isSwitch || setting.boolValue()) enabled->append(dataclass);
    record.remove(key);
  }
  record.set(kAccountEnabledDataclasses, enabled);
}

void addLegacy(std::vector<Entry>& entries, const LegacyFile& file, Source source) {
  const ArrayRef descriptions =
      file.content ? (*file.content)[keyOfAccounts(source)].array() : nullptr;
  if (!descriptions) return;
  for (const Value& element : *descriptions) {
    DictionaryRef record = element.dictionary();
    if (record) {
      record = record->mutableCopy();
      if (source == Source::LegacyExchange) {
        asExchangeRecord(*record);
      } else {
        asMailRecord(*record, source);
      }
    }
    entries.push_back({source, element, record, std::nullopt});
  }
}

}  // namespace

std::string Entry::text(std::string_view key) const {
  return record ? (*record)[key].string().str() : std::string();
}

std::string nameOf(const Entry& entry, const std::vector<Entry>& list) {
  for (const String& key :
       {kAccountDisplayName, kAccountUsername, kAccountTypeString, kAccountType}) {
    if (std::string name = entry.text(key); !name.empty()) return name;
  }
  if (entry.parent) return nameOf(list[*entry.parent], list);
  return entry.record ? "(no name)" : "(no account)";
}

std::string nameOfFile(Source source) {
  return source == Source::LegacyExchange ? "legacy Exchange file" : "legacy mail file";
}

std::string_view keyOfAccounts(Source source) {
  switch (source) {
    case Source::AccountsFile:
      return kPlistAccountsKey.view();
    case Source::LegacyExchange:
      return "SyncoraAccountsKey";
    case Source::LegacyOutgoing:
      return "DeliveryAccounts";
    case Source::LegacyIncoming:
      return "MailAccounts";
  }
  return {};
}

bool isHostedClass(std::string_view className) {
  return className == "VeltroAccount" || className == "PendrelAccount";
}

std::vector<Entry> entriesOf(const tool::AccountsFile& file) {
  std::vector<Entry> entries;
  const ArrayRef records = file.records();
  if (!records) return entries;
  for (const Value& element : *records) {
    const DictionaryRef record = element.dictionary();
    const std::size_t place = entries.size();
    entries.push_back({Source::AccountsFile, element, record, std::nullopt});
    const ArrayRef children = record ? (*record)[kAccountChildAccounts].array() : nullptr;
    if (!children) continue;
    for (const Value& child : *children) {
      if (child.dictionary()) {
        entries.push_back({Source::AccountsFile, child, child.dictionary(), place});
      }
    }
  }
  return entries;
}

std::vector<Entry> entriesOf(const DeviceState& state) {
  std::vector<Entry> entries = entriesOf(state.accounts);
  addLegacy(entries, state.legacyExchange, Source::LegacyExchange);
  addLegacy(entries, state.legacyMail, Source::LegacyOutgoing);
  addLegacy(entries, state.legacyMail, Source::LegacyIncoming);
  return entries;
}

std::string lastingContent(const Dictionary& record) {
  static const std::array<std::string_view, 13> kPassing = {kAccountIdentifier,
                                                            kAccountSyncIdentifier,
                                                            kAccountType,
                                                            kAccountTypeString,
                                                            kAccountShortTypeString,
                                                            kAccountEnabledDataclasses,
                                                            kAccountProvisionedDataclasses,
                                                            kAccountChildAccounts,
                                                            kCalendarsAccountSubscribedCalendars,
                                                            "SyncoraExoSubscribedCalendarInfos",
                                                            "uniqueId",
                                                            "accountStatus",
                                                            "primaryAccount"};
  std::map<std::string_view, std::string> lasting;
  for (const auto& [key, value] : record) {
    if (std::ranges::find(kPassing, key.view()) == kPassing.end()) {
      lasting.emplace(key.view(), value.description());
    }
  }
  std::string content;
  for (const auto& [key, text] : lasting) content.append(key).append("=").append(text).append("\n");
  return content;
}

}  // namespace tallbook::migrate
