#include "tools/tallbook/Records.h"

#include "tallbook/Vocabulary.h"

#include "tools/common/AccountsFile.h"
#include "tools/common/Outcome.h"
#include "tools/common/Output.h"

namespace tallbook::tool {

std::shared_ptr<AccountsManager> storeToRead() {
  const AccountsFile file = readAccountsFile();
  if (file.isUnusable()) {
    throw unusable(file, "restore it from a copy, or see \"tallbook check\"");
  }
  requirePrintable(file);
  noteMissing(file);
  return AccountsManager::initWithAccountsFile(file);
}

std::shared_ptr<BasicAccount> recordNamed(const AccountsManager& store,
                                          const std::string& identifier) {
  const std::string_view wanted = identifier;
  if (const auto topLevel = store.accountWithIdentifier(wanted)) {
    if (topLevel->identifier() == wanted) return topLevel;
    for (const auto& record : store.allBasicSyncableAccounts()) {
      if (record->parentAccount() && record->identifier() == wanted) return record;
    }
  }
  throw Failure(ExitCode::NotFound, "no account has the identifier \"" + identifier +
                                        "\"; \"tallbook list\" shows those there are");
}

std::string nameOf(const BasicAccount& record) {
  for (const String& name :
       {record.displayName(), record.accountPropertyForKey(kAccountUsername).string(),
        record.typeString()}) {
    if (!name.empty()) return name.str();
  }
  return record.type().str();
}

std::string storedIdentifier(const BasicAccount& record) {
  return (*record.originalProperties())[kAccountIdentifier].string().str();
}

std::vector<String> accountTypes() {
  std::vector<String> types;
  for (const String& type :
       {kMailAccountType, kGmailAccountType, kYahooAccountType, kMorwickIMAPAccountType,
        kSMTPAccountType, kExchangeAccountType, kOrvaneAccountType, kVeltroAccountType,
        kCalDAVAccountType, kSubscribedCalendarAccountType, kCardDAVAccountType, kLDAPAccountType,
        kBookmarkDAVAccountType, kIMAPNotesAccountType, kOnMyDeviceAccountType}) {
    if (BasicAccount::_isValidAccountType(type)) types.push_back(type);
  }
  return types;
}

void requireAccountType(const std::string& type) {
  if (BasicAccount::_isValidAccountType(type)) return;
  std::string known;
  for (const String& each : accountTypes()) known += (known.empty() ? "" : ", ") + each.str();
  throw Failure(ExitCode::Usage, "there is no account type \"" + type + "\"; there are: " + known);
}

}  // namespace tallbook::tool
