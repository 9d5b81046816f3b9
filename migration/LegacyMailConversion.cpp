#include <array>
#include <optional>
#include <string>

#include "tallbook/Vocabulary.h"

#include "migration/AccountsDataMigrator.h"
#include "migration/LegacyFile.h"
#include "migration/StepHelpers.h"
#include "platform/OncePerPlatform.h"
#include "store/TBRuntimeFixMailAccount.h"

namespace tallbook {
namespace {

const std::array<Renaming, 3>& renamings() {
  static const std::array<Renaming, 3> table = {{{"AccountType", kAccountClass},
                                                 {"AccountName", kAccountDisplayName},
                                                 {"uniqueId", kAccountIdentifier}}};
  return table;
}

/// What a legacy mail account class tells of its accounts.
struct MailAccountClass {
  std::string_view name;
  const String& type;
  const char* typeString;
};

const MailAccountClass& mailAccountClassNamed(std::string_view name) {
  // "Yahoo!" keeps its exclamation mark at its right in right-to-left text.
  static const std::array<MailAccountClass, 8> classes = {{
      {"GmailAccount", kGmailAccountType, "Gmail"},
      {"PendrelAccount", kVeltroAccountType, "Veltro"},
      {"VeltroAccount", kVeltroAccountType, "Veltro"},
      {"MorwickIMAPAccount", kMorwickIMAPAccountType, "Nimbrel"},
      {"YahooAccount", kYahooAccountType, "Yahoo!\u200E"},
      {"SyncoraMailAccount", kExchangeAccountType, "Exchange ActiveSync"},
      {"DeliveryAccount", kSMTPAccountType, "Account"},
      {"SMTPAccount", kSMTPAccountType, "Account"},
  }};
  static const MailAccountClass other = {"", kMailAccountType, "Account"};
  for (const MailAccountClass& known : classes) {
    if (known.name == name) return known;
  }
  return other;
}

// Whether the umbrella account has a child of the account's identifier and class.
bool holdsWrapped(const BasicAccount& umbrella, const BasicAccount& account) {
  return hasChildWhich(umbrella, [&](const Dictionary& child) {
    return child[kAccountIdentifier].string() == account.identifier() &&
           child[kAccountClass].string() == account.accountClass();
  });
}

// A hosted-service account that an interrupted migration converted before, and wrapped, comes back
// as the child that it has become.
void keepWrapped(const AccountsManager& store, const AccountsManager::AccountList& accounts) {
  for (const auto& account : accounts) {
    if (!isHostedMailAccount(*account)) continue;
    const String identifier = account->identifier();
    const auto filed = store.accountWithIdentifier(identifier);
    const bool isUmbrella = filed && filed->type() == kOrvaneAccountType;
    if (isUmbrella && holdsWrapped(*filed, *account)) account->setParentAccount(filed);
  }
}

}  // namespace

String AccountsDataMigrator::_accountTypeForMailAccountClass(std::string_view mailAccountClass) {
  return mailAccountClassNamed(mailAccountClass).type;
}

String AccountsDataMigrator::_accountTypeStringForMailAccountClass(
    std::string_view mailAccountClass) {
  return _accountShortTypeStringForMailAccountClass(mailAccountClass);
}

String AccountsDataMigrator::_accountShortTypeStringForMailAccountClass(
    std::string_view mailAccountClass) {
  const MailAccountClass& known = mailAccountClassNamed(mailAccountClass);
  return known.type == kGmailAccountType && _UseGoogleMail() ? "Google Mail" : known.typeString;
}

bool AccountsDataMigrator::_migrateMailAccounts(const Store& store) {
  LegacyFile file(mailAccountsPath());
  if (file.hasEntries()) _foundOldMailAccountsToMigrate = true;
  collate("OldMailAccounts", file.contents());

  const auto converted = [&](std::string_view key, const String& type, const std::string& kind) {
    return file.accountsMadeOf(
        key,
        [&](const DictionaryRef& each) { return _convertMailAccountDescriptionType(each, type); },
        "-[AccountsDataMigrator(Internal) _migrateMailAccounts:]. Could not convert the "
        "description for the " +
            kind + " account ");
  };
  const auto outgoing = converted("DeliveryAccounts", kSMTPAccountType, "delivery");
  const auto incoming =
      outgoing ? converted("MailAccounts", kMailAccountType, "incoming") : std::nullopt;
  if (incoming) {
    if (!file.wasUnderstood()) keepAccountsOfTypes(store, {kSMTPAccountType, kMailAccountType});
    keepWrapped(*store, *incoming);
    store->replaceAccountsWithTypesWithAccounts({kSMTPAccountType}, *outgoing);
    store->replaceAccountsWithTypesWithAccounts({kMailAccountType}, *incoming);
  }
  _oldMailFile = incoming && file.wasUnderstood() ? OldFile::MayGo : OldFile::Stays;
  file.removeOriginal();
  return incoming.has_value();
}

AccountsDataMigrator::Account AccountsDataMigrator::_convertMailAccountDescriptionType(
    const DictionaryRef& description, const String& type) {
  const DictionaryRef properties = renamed(description, renamings());
  if (!properties) return nullptr;
  properties->set(kAccountType, type);
  if (!properties->contains(kAccountClass) && type == kSMTPAccountType) {
    properties->set(kAccountClass, "SMTPAccount");
  }
  if (const String mailClass = (*properties)[kAccountClass].string()) {
    properties->set(kAccountTypeString, _accountTypeStringForMailAccountClass(mailClass));
    properties->set(kAccountShortTypeString, _accountShortTypeStringForMailAccountClass(mailClass));
    properties->set(kAccountType, _accountTypeForMailAccountClass(mailClass));
  }
  if ((*properties)[kAccountType].string() == kVeltroAccountType) {
    // The hosted service knows its users without their domain.
    const String username = (*properties)[kAccountUsername].string();
    const auto at = username.view().find('@');
    if (at != std::string_view::npos) {
      properties->set(kAccountUsername, username.view().substr(0, at));
    }
  }
  const Account account = BasicAccount::initWithProperties(properties);
  if (!account) return nullptr;
  const Value* identifier = properties->find(kAccountIdentifier);
  account->setAccountPropertyForKey(
      identifier ? *identifier : Value(BasicAccount::createNewAccountUID()),
      kAccountSyncIdentifier);
  if (account->accountClass() == "MailAccount") {
    reportMailAccountClassFound(account->properties().get(), "During account migration");
  }
  return account;
}

}  // namespace tallbook

bool _UseGoogleMail() {
  using namespace tallbook;
  static OncePerPlatform<bool> isUsed;
  return isUsed.get([] {
    const Value answer =
        Platform::current().deviceInformation().answerForKey("RegionalBehaviorGoogleMail");
    return answer.kind() == Value::Kind::Boolean && answer.boolValue();
  });
}
