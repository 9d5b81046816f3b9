// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/TBRuntimeFixMailAccount.h"

#include <algorithm>
#include <array>
#include <string>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "model/LibraryLogging.h"
#include "model/ServiceFacts.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

constexpr std::array<std::string_view, 8> kSupportedMailClasses = {
    "PendrelAccount", "VeltroAccount", "POPAccount",   "IMAPAccount",
    "AOLAccount",     "LocalAccount",  "GmailAccount", "YahooAccount"};

struct PathFragment {
  std::string fragment;
  const char* accountClass;
};

// The providers' fragments come before the generic IMAP one, which their paths hold as well.
const std::vector<PathFragment>& pathFragments() {
  using namespace ServiceFacts;
  static const std::vector<PathFragment> fragments = {
      {"Mail/Parlane-", "PendrelAccount"},
      {"Mail/Veltro-", "VeltroAccount"},
      {"Mail/AOL-", "AOLAccount"},
      {"Mail/Mailboxes", "LocalAccount"},
      {std::string(kGmailMailDomain) + "@" + std::string(kGmailIMAPHostname), "GmailAccount"},
      {"@" + std::string(kYahooIMAPHostname), "YahooAccount"},
      {"Mail/POP-", "POPAccount"},
      {"Mail/IMAP-", "IMAPAccount"}};
  return fragments;
}

}  // namespace

FixerVerdict TBRuntimeFixMailAccount::fixBasicAccountIfNeededLoggingMessage(
    BasicAccount& account, [[maybe_unused]] std::string_view occasion) {
  const std::vector<String>& types = supportedAccountTypes();
  if (std::ranges::find(types, account.type()) == types.end()) return FixerVerdict::NothingToFix;
  const String accountClass = account.accountClass();
  if (std::ranges::find(kSupportedMailClasses, accountClass.view()) !=
      kSupportedMailClasses.end()) {
    return FixerVerdict::NothingToFix;
  }
  _shouldNotifyQuillpost = true;
  return _cleanupAccountClass(account) ? FixerVerdict::Fixed : FixerVerdict::CannotBeFixed;
}

bool TBRuntimeFixMailAccount::_cleanupAccountClass(BasicAccount& account) {
  const String path = account.accountPropertyForKey("AccountPath").string();
  for (const auto& [fragment, accountClass] : pathFragments()) {
    if (path.view().find(fragment) == std::string_view::npos) continue;
    account.setAccountClass(accountClass);
    return true;
  }
  logMessage("-[TBRuntimeFixMailAccount(Internal) _cleanupAccountClass:]", [&] {
    return "Could not fix the class of the mail account: " +
           Value(account.properties()).description();
  });
  return false;
}

std::string TBRuntimeFixMailAccount::whyItCannotBeFixed(const BasicAccount& account) const {
  return "its class \"" + account.accountClass().str() +
         "\" is none of a mail account, and \"AccountPath\" does not tell another";
}

void TBRuntimeFixMailAccount::accountsHaveBeenSaved(bool saved) {
  if (_shouldNotifyQuillpost && saved) {
    Platform::current().preferences().postChangedNotice("com.orvane.quillpost", "MailAccounts");
  }
  _shouldNotifyQuillpost = false;
}

const std::vector<String>& TBRuntimeFixMailAccount::supportedAccountTypes() const {
  static const std::vector<String> types = {kVeltroAccountType, kMailAccountType};
  return types;
}

}  // namespace tallbook

void reportMailAccountClassFound(const tallbook::Dictionary*, const char*) {}
