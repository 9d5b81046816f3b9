// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <array>
#include <iterator>
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

// The properties of the record that a description becomes; null for null.
DictionaryRef propertiesOf(const DictionaryRef& description, const String& type) {
  using Migrator = AccountsDataMigrator;
  const DictionaryRef properties = renamed(description, renamings());
  if (!properties) return nullptr;
  properties->set(kAccountType, type);
  if (!properties->contains(kAccountClass) && type == kSMTPAccountType) {
    properties->set(kAccountClass, "SMTPAccount");
  }
  if (const String mailClass = (*properties)[kAccountClass].string()) {
    properties->set(kAccountTypeString, Migrator::_accountTypeStringForMailAccountClass(mailClass));
    properties->set(kAccountShortTypeString,
                    Migrator::_accountShortTypeStringForMailAccountClass(mailClass));
    properties->set(kAccountType, Migrator::_accountTypeForMailAccountClass(mailClass));
  }
  if ((*properties)[kAccountType].string() == kVeltroAccountType) {
    // The hosted service knows its users without their domain.
    const String username = (*properties)[kAccountUsername].string();
    const auto at = username.view().find('@');
    if (at != std::string_view::npos) {
      properties->set(kAccountUsername, username.view().substr(0, at));
    }
  }
  return properties;
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
  struct Kind {
    std::string_view key;
    const String& type;
    std::string name;
  };
  const Kind delivery{"DeliveryAccounts", kSMTPAccountType, "delivery"};
  const Kind mail{"MailAccounts", kMailAccountType, "incoming"};
  LegacyFile file(mailAccountsPath());
  if (file.hasEntries()) _foundOldMailAccountsToMigrate = true;
  collate("OldMailAccounts", file.contents());

  const auto converted = [&](const Kind& kind) {
    return file.accountsMadeOf(
        kind.key,
        [&](const DictionaryRef& each) {
          return _convertMailAccountDescriptionType(each, kind.type);
        },
        "-[AccountsDataMigrator(Internal) _migrateMailAccounts:]. Could not convert the "
        "description for the " +
            kind.name + " account ");
  };
  auto outgoing = converted(delivery);
  auto incoming = outgoing ? converted(mail) : std::nullopt;
  const bool isConverted = incoming.has_value();
  if (isConverted) {
    leaveOutWrapped(*store, *incoming);
    constexpr const char* kReplaced = "replaced by the accounts of the legacy mail file";
    constexpr const char* kMet = "an account of the legacy mail file has its identifier";
    replaceAccounts(store, {kSMTPAccountType}, *outgoing, kReplaced, kMet);
    replaceAccounts(store, {kMailAccountType}, *incoming, kReplaced, kMet);
    std::ranges::move(*outgoing, std::back_inserter(*incoming));
  } else {
    for (const Kind& kind : {delivery, mail}) {
      tellNotConverted(file, kind.key, [&](const DictionaryRef& description) {
        return propertiesOf(description, kind.type);
      });
    }
  }
  _oldMailFile = file.end(std::move(incoming));
  file.removeOriginal();
  endStage("legacy mail file", store);
  return isConverted;
}

void AccountsDataMigrator::leaveOutWrapped(const AccountsManager& store,
                                           AccountsManager::AccountList& accounts) {
  std::erase_if(accounts, [&](const Account& account) {
    if (!isHostedMailAccount(*account)) return false;
    const String identifier = account->identifier();
    const Account filed = store.accountWithIdentifier(identifier);
    // Only under an umbrella account of the earlier hosted service: another parent has the child
    // from somebody else.
    if (!filed || filed->type() != kOrvaneAccountType || !isHostedMailAccount(*filed) ||
        !holdsWrapped(*filed, *account)) {
      return false;
    }
    if (_observer) {
      _observer->accountLeft(account->properties(),
                             "it was converted before, and stands in " + nameOf(*filed));
    }
    return true;
  });
}

AccountsDataMigrator::Account AccountsDataMigrator::_convertMailAccountDescriptionType(
    const DictionaryRef& description, const String& type) {
  const DictionaryRef properties = propertiesOf(description, type);
  const Account account = properties ? BasicAccount::initWithProperties(properties) : nullptr;
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
